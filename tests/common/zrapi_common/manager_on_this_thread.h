#pragma once

#include <functional>

/// The tracer follows a program's main thread only. A program that is linked with this source can
/// let a manager's loop run there: the start of its thread is put off.

namespace ZR::test {

/// While set, a new thread is not started; run threadPutOff() instead. Its id is the caller's.
void putOffThreads(bool putOff);

/// What the last thread that was put off would have run.
std::function<void()> threadPutOff();

}  // namespace ZR::test
