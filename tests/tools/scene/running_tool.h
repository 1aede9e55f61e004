#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <string>
#include <vector>

namespace ZR::test {

/// A program that runs beside the test, in a folder of its own and with another empty one for
/// temporary files. It is killed with this object; every wait is limited.
class RunningTool {
  public:
    RunningTool();
    ~RunningTool();

    /// @name Before start()
    /// @{
    void unsetVariable(const QString& name);
    void setVariable(const QString& name, const QString& value);
    void setFolder(const QString& folder) { process_.setWorkingDirectory(folder); }
    /// @}

    void start(const QString& program, const QStringList& arguments);
    /// Starts `zrctl video play`.
    void play(const QStringList& options);

    /// The next line of its output; throws after a minute.
    std::string readLine();
    /// Reads until a document of its output tells of this state; throws at the end of the output.
    QJsonObject awaitState(const QString& state);
    void sendSignal(int signal);

    /// Waits for its end. @return the exit status, 128 and more after a signal
    int wait();

    /// @name After wait()
    /// @{
    std::string output() { return output_; }  ///< what readLine() has not read
    std::string errors() { return errors_; }
    /// The last line of the output.
    QJsonObject lastDocument() const;
    /// @}

    QString folder() const { return folder_.path(); }
    /// What it has left in its folder and in the one for temporary files.
    QStringList leftFiles() const;

  private:
    QTemporaryDir folder_;
    QTemporaryDir temporary_;
    QTemporaryDir runtime_;
    QProcess process_;
    QProcessEnvironment environment_;
    std::string output_;
    std::string errors_;
};

}  // namespace ZR::test
