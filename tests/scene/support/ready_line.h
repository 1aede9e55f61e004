#pragma once

namespace ZR::test {

/// What a sender or server prints, as a line, once it is at work.
constexpr char readyLine[] = "ready";

}  // namespace ZR::test
