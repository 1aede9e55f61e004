#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// What a single fault may do to each operation, as a table.
///
/// An outcome is a text: what the operation gave, then each of its reports and what it printed,
/// each behind " | ". "{error}" in an expected outcome stands for the number of the injected errno,
/// "{reason}" for its text.

namespace ZR::test {

/// What happens when one system call of an operation goes wrong.
struct CallRule {
    std::string call;                   ///< name, as in the good run
    std::string failed;                 ///< outcome when it fails with EIO or EACCES
    std::string missing;                ///< outcome when it fails with ENOENT
    std::string interrupted;            ///< outcome when it fails with EINTR
    std::string shortened;              ///< outcome when it moves one byte only
    std::string afterwards;             ///< outcome of the next operation after a visible failure
    std::string reason;                 ///< why the fault does not show
    std::string afterwardsShortened{};  ///< outcome of the next operation after a visible short one
};

/// Outcome of the good run.
inline constexpr char good[] = "{good}";

/// Any errno shows, an interruption too: the call is not one that is repeated.
CallRule fails(const std::string& call, const std::string& outcome);

/// Any errno shows, but an interrupted call is repeated and a short one completed.
CallRule repeats(const std::string& call, const std::string& outcome);

/// Reading on in a folder: the C library takes ENOENT for the end, the folder being gone by then.
CallRule lists(const std::string& outcome, const std::string& ended);

/// No errno shows, for the stated reason.
CallRule hides(const std::string& call, const std::string& reason);

struct FaultCase {
    std::string name;
    std::function<void()> layOut;          ///< makes the files, before each run
    std::function<void()> prepare;         ///< what must exist before; its calls do not count
    std::function<std::string()> operate;  ///< the operation; what it gave
    std::function<std::string()> observe;  ///< further outcome, looked up without being traced
    std::string goodOutcome;
    std::vector<CallRule> calls;  ///< all system calls of the good run, in their order
    std::string nextOutcome{};    ///< outcome of a good operation after it, where it differs
};

void PrintTo(const FaultCase& each, std::ostream* stream);

std::vector<FaultCase> canCases();
std::vector<FaultCase> dimmableBuildingCases();
std::vector<FaultCase> dimmableCases();
std::vector<FaultCase> inputOutputCases();
std::vector<FaultCase> featureDetectionCases();
std::vector<FaultCase> netlinkCases();
std::vector<FaultCase> fileServiceCases();
std::vector<FaultCase> videoInputCases();

}  // namespace ZR::test
