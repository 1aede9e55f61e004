#include "tests/support/report_log.h"

#include <mutex>
#include <ostream>

#include "common/zrapi_common/zr_debug.h"

namespace ZR::test {
namespace {

// The sink is a plain function, so what it fills is the process's.
std::mutex reportMutex;
std::vector<Report> collected;

void collect(int level, const char* section, const char* message) {
    const std::lock_guard<std::mutex> lock(reportMutex);
    collected.push_back({level, section, message});
}

}  // namespace

bool operator==(const Report& left, const Report& right) {
    return left.level == right.level && left.section == right.section &&
           left.message == right.message;
}

std::ostream& operator<<(std::ostream& stream, const Report& report) {
    return stream << '{' << report.level << ", " << report.section << ", \"" << report.message
                  << "\"}";
}

ReportLog::ReportLog() {
    clear();
    ZRDebug::setSink(collect);
}

ReportLog::~ReportLog() {
    ZRDebug::setSink(nullptr);
}

std::vector<Report> ReportLog::reports() const {
    const std::lock_guard<std::mutex> lock(reportMutex);
    return collected;
}

void ReportLog::clear() {
    const std::lock_guard<std::mutex> lock(reportMutex);
    collected.clear();
}

}  // namespace ZR::test
