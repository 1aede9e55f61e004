#include "tests/tools/scene/running_tool.h"

#include <QDir>
#include <QJsonDocument>
#include <csignal>
#include <stdexcept>

namespace ZR::test {
namespace {

constexpr int longestWait = 60000;  // milliseconds

QJsonObject document(const std::string& line) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
}

}  // namespace

RunningTool::RunningTool() : environment_(QProcessEnvironment::systemEnvironment()) {
    setVariable("TMPDIR", temporary_.path());
    // Without it Qt makes one in the place for temporary files.
    setVariable("XDG_RUNTIME_DIR", runtime_.path());
    // What Mesa and the plug-ins keep lies in modules that are unloaded by then, and cannot be named to
    // the leak check. The scenes that use the library themselves look for leaks.
    setVariable("ASAN_OPTIONS", "detect_leaks=0");
    setFolder(folder_.path());
}

RunningTool::~RunningTool() {
    process_.kill();
    (void)process_.waitForFinished();
}

void RunningTool::unsetVariable(const QString& name) {
    environment_.remove(name);
}

void RunningTool::setVariable(const QString& name, const QString& value) {
    environment_.insert(name, value);
}

void RunningTool::start(const QString& program, const QStringList& arguments) {
    process_.setProcessEnvironment(environment_);
    process_.start(program, arguments, QIODevice::ReadOnly);
    if (!process_.waitForStarted(longestWait))
        throw std::runtime_error("the program does not start");
}

void RunningTool::play(const QStringList& options) {
    start(ZRCTL_PROGRAM, QStringList{"video", "play"} + options);
}

std::string RunningTool::readLine() {
    while (!process_.canReadLine()) {
        if (process_.waitForReadyRead(longestWait))
            continue;
        throw std::runtime_error("no line comes; the program says: " +
                                 process_.readAllStandardError().toStdString());
    }
    return process_.readLine().trimmed().toStdString();
}

QJsonObject RunningTool::awaitState(const QString& state) {
    for (;;) {
        QJsonObject next = document(readLine());
        if (next["state"].toString() == state)
            return next;
    }
}

void RunningTool::sendSignal(int signal) {
    (void)::kill(static_cast<pid_t>(process_.processId()), signal);
}

int RunningTool::wait() {
    if (process_.state() != QProcess::NotRunning && !process_.waitForFinished(longestWait))
        throw std::runtime_error("the program does not end");
    output_ = process_.readAllStandardOutput().toStdString();
    errors_ = process_.readAllStandardError().toStdString();
    return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode()
                                                         : 128 + process_.exitCode();
}

QJsonObject RunningTool::lastDocument() const {
    const std::size_t end = output_.find_last_not_of('\n');
    if (end == std::string::npos)
        return {};
    const std::size_t before = output_.rfind('\n', end);
    return document(output_.substr(before == std::string::npos ? 0 : before + 1));
}

QStringList RunningTool::leftFiles() const {
    const auto filter = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    return QDir(folder_.path()).entryList(filter) + QDir(temporary_.path()).entryList(filter);
}

}  // namespace ZR::test
