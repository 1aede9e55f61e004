#include "tools/zrctl/play_window.h"

#include <fcntl.h>
#include <unistd.h>

#include <QEvent>
#include <QFile>
#include <QImage>
#include <QSaveFile>
#include <QTemporaryDir>
#include <mutex>

#include "tools/zrctl/command.h"
#include "tools/zrctl/descriptor.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr int tickMilliseconds = 20;

/// Mirror is 1 for left and right exchanged, 2 for top and bottom, 3 for both. A picture whose item
/// was sized for a quarter turn covers the same area as without: it is turned around its middle,
/// which is moved onto that of its host. No text, so that no font is needed.
constexpr char sceneFile[] = "video.qml";
constexpr char sceneText[] = R"(import QtQuick 2.0
import org.freedesktop.gstreamer.GLVideoItem 1.0

Item {
    GstGLVideoItem {
        id: video
        objectName: "videoItem"

        property int mirror: 0
        property int turn: 0

        function setTransformation(newMirror, newTurn) {
            mirror = newMirror
            turn = newTurn
        }

        transform: [
            Scale {
                origin.x: video.width / 2
                origin.y: video.height / 2
                xScale: (video.mirror & 1) ? -1 : 1
                yScale: (video.mirror & 2) ? -1 : 1
            },
            Rotation {
                origin.x: video.width / 2
                origin.y: video.height / 2
                angle: video.turn
            },
            Translate {
                x: video.parent ? (video.parent.width - video.width) / 2 : 0
                y: video.parent ? (video.parent.height - video.height) / 2 : 0
            }
        ]
    }

    Rectangle {
        objectName: "waitItemCamera"
        color: "#20242a"

        Row {
            anchors.centerIn: parent
            spacing: 12
            Repeater {
                model: 3
                Rectangle { width: 16; height: 16; radius: 8; color: "#7a8490" }
            }
        }
    }
}
)";

struct QtMessages {
    std::mutex mutex;
    std::string lastWarning;
    bool audible = false;
    bool json = false;
};

QtMessages& messages() {
    static auto& kept = *new QtMessages;
    return kept;
}

/// Qt ends the process after these; there is a better line to end with.
[[noreturn]] void endWithoutDisplay() {
    const std::string text =
        "no window can be opened on this display; set DISPLAY (or QT_QPA_PLATFORM) to one that "
        "works, or unset it";
    try {
        printError(text);
        if (messages().json)
            print(JsonObject().addText("error", text).text() + '\n');
    } catch (const OutputError&) {  // NOLINT(bugprone-empty-catch): the line was written
    }
    ::_exit(statusFailure);
}

void handleQtMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    const std::string line = text.toStdString();
    if (messages().audible)
        printError("library: " + line);
    if (type == QtFatalMsg || line.rfind("The X11 connection broke", 0) == 0)
        endWithoutDisplay();
    const std::lock_guard<std::mutex> lock(messages().mutex);
    if (type != QtDebugMsg && type != QtInfoMsg)
        messages().lastWarning = line;
}

QGuiApplication* makeApplication() {
    // Qt keeps both as long as the application lives.
    static int count = 1;
    static char name[] = "zrctl";
    static char* arguments[] = {name, nullptr};
    // The scene's file has another path each time: compiling it for later fills a folder.
    (void)::setenv("QML_DISABLE_DISK_CACHE", "1", 1);
    return new QGuiApplication(count, arguments);
}

/// A working folder with the scene's file in it, while an object of this class lives.
class SceneFolder {
  public:
    SceneFolder() : before_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        QFile file(folder_.filePath(sceneFile));
        usable_ = folder_.isValid() && file.open(QIODevice::WriteOnly) &&
                  file.write(sceneText) == static_cast<qint64>(sizeof sceneText - 1) &&
                  file.flush() && ::chdir(QFile::encodeName(folder_.path())) == 0;
    }
    SceneFolder(const SceneFolder&) = delete;
    SceneFolder& operator=(const SceneFolder&) = delete;
    ~SceneFolder() { (void)::fchdir(before_.number()); }

    bool isUsable() const { return usable_; }

  private:
    Descriptor before_;
    QTemporaryDir folder_;
    bool usable_ = false;
};

QQuickItem* childNamed(const QQuickItem& parent, const char* name) {
    const auto children = parent.childItems();
    for (QQuickItem* const child : children) {
        if (child->objectName() == QLatin1String(name))
            return child;
    }
    return nullptr;
}

}  // namespace

void takeQtMessages(bool audible, bool json) {
    messages().audible = audible;
    messages().json = json;
    qInstallMessageHandler(handleQtMessage);
}

std::string lastQtWarning() {
    const std::lock_guard<std::mutex> lock(messages().mutex);
    return messages().lastWarning;
}

PlayWindow::PlayWindow(const PlayRequest& request)
    : application_(makeApplication()),
      window_(std::make_unique<QQuickWindow>()),
      counter_(std::make_unique<PictureCounter>(*window_)),
      host_(new QQuickItem(window_->contentItem())) {
    QGuiApplication::setQuitOnLastWindowClosed(false);
    window_->setTitle(QString::fromStdString("zrctl video play --type " + request.typeName));
    window_->setColor(Qt::black);
    window_->resize(request.width, request.height);
    window_->installEventFilter(this);
    for (const auto change : {&QQuickWindow::widthChanged, &QQuickWindow::heightChanged})
        QObject::connect(window_.get(), change, host_, [this] { fit(); });
    fit();
    window_->show();
    tick_.start(tickMilliseconds);
}

PlayWindow::~PlayWindow() {
    tick_.stop();
    window_->removeEventFilter(this);
    // Nothing is drawn from here on.
    window_->hide();
    counter_.reset();
    window_.reset();
    application_.reset();
}

void PlayWindow::runFor() {
    // The timer ends the wait.
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

bool PlayWindow::place(ZR::ZRGstreamerVideoInput& input, unsigned short key) {
    const SceneFolder folder;
    if (!folder.isUsable())
        return false;
    input.setVideoItem(host_, ZR::ZRColor());
    video_ = childNamed(*host_, "videoItem");
    wait_ = childNamed(*host_, "waitItemCamera");
    input_ = &input;
    key_ = key;
    return video_ != nullptr && wait_ != nullptr;
}

bool PlayWindow::eventFilter(QObject* object, QEvent* event) {
    if (object == window_.get() && event->type() == QEvent::Close) {
        closed_ = true;
        event->ignore();
        return true;
    }
    return QObject::eventFilter(object, event);
}

void PlayWindow::fit() {
    host_->setSize(QSizeF(window_->width(), window_->height()));
    if (wait_ != nullptr)
        wait_->setSize(host_->size());
    // Takes the item's size from its host.
    if (input_ != nullptr)
        (void)input_->setSize(key_, 0, 0);
}

std::string PlayWindow::save(const std::string& path) {
    const QImage image = window_->grabWindow();
    QSaveFile file(QFile::decodeName(path.c_str()));
    if (image.isNull() || !file.open(QIODevice::WriteOnly) || !image.save(&file, "PNG") ||
        !file.commit())
        return "snapshot " + path + " cannot be written: " + file.errorString().toStdString();
    return "";
}

}  // namespace zrctl
