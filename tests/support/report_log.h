#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace ZR::test {

/// One report of ZRDebug.
struct Report {
    int level;
    std::string section;
    std::string message;
};

bool operator==(const Report& left, const Report& right);
std::ostream& operator<<(std::ostream& stream, const Report& report);

/// Collects the reports of the whole process while it lives, from any thread. One at a time.
class ReportLog {
  public:
    ReportLog();
    ReportLog(const ReportLog&) = delete;
    ReportLog& operator=(const ReportLog&) = delete;
    ~ReportLog();

    /// The reports since construction or the last clear(), oldest first.
    std::vector<Report> reports() const;

    void clear();
};

}  // namespace ZR::test
