#pragma once

#include "tools/zrctl/command.h"

namespace zrctl {

int runVideoTopology(const Words& words, const CommonOptions& common);
int runVideoStandard(const Words& words, const CommonOptions& common);
int runVideoPlay(const Words& words, const CommonOptions& common);

}  // namespace zrctl
