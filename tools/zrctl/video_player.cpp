#include "tools/zrctl/video_player.h"

#include <stdexcept>
#include <utility>

namespace zrctl {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Input = ZR::ZRGstreamerVideoInput;

constexpr long long preparationLimit = 120;   // seconds; an emulated machine takes its time
constexpr long long standstill = 2000;        // milliseconds without a new picture
constexpr unsigned short networkKey = 0;      // the library's, while the port is its own
constexpr unsigned short changedPortKey = 4;  // the library's, once another one was chosen

Input& makeInput() {
    Input* const input = Input::getInstance("play");
    if (input == nullptr)
        throw std::runtime_error("no memory for a video input");
    return *input;
}

/// What to look at when a stream shows nothing.
std::string advice(const PlayRequest& request) {
    const std::string port = std::to_string(request.port);
    switch (request.type) {
        case ZR::StreamUdpH264:
            return "check that H.264 in RTP, payload type 96, is sent to UDP port " + port;
        case ZR::StreamUdpJpeg:
            return "check that JPEG in RTP, payload type 26, is sent to UDP port " + port;
        case ZR::StreamRtsp:
            return "check that " + request.url + " offers H.264 over UDP";
        default:
            return "'zrctl video topology' and 'zrctl video standard " +
                   std::to_string(request.camera) + "' show the camera's way";
    }
}

}  // namespace

VideoPlayer::VideoPlayer(const PlayRequest& request, PlayRecord& record)
    : request_(request),
      record_(record),
      window_(request),
      listener_([this](const std::string& line) {
          const std::lock_guard<std::mutex> lock(newsMutex_);
          news_.add(line);
      }),
      input_(makeInput()) {
    Input::setMainWindow(window_.contentItem());
}

/// The order that works: pipelines stopped, items out of the scene, threads ended, window closed.
VideoPlayer::~VideoPlayer() {
    input_.stop(0);
    input_.handleQueuedCommands();
    // Without a main window the items have no parent afterwards, and outlive the window.
    Input::setMainWindow(nullptr);
    input_.removeVideoItem();
    window_.watch(nullptr);
    pipeline_.reset();
    input_.reset();
    Input::doQuit();
}

long long VideoPlayer::now() const {
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start_).count();
}

/// Waits for one frame more than there are.
std::string VideoPlayer::awaitFrame(const EndRequest& endRequest) {
    const long long before = window_.counter().frames();
    const Deadline deadline(preparationLimit);
    while (window_.counter().frames() == before || !Input::gstInitDone) {
        window_.runFor();
        if (deadline.isOver())
            return "the window is not drawn; check that its display can draw with OpenGL";
        if (window_.isClosed() || endRequest.wait(0))
            return "ended before the stream was started";
    }
    return "";
}

/// Brings the items into the scene, and both through a frame: a sink can start only then.
std::string VideoPlayer::prepare(const EndRequest& endRequest) {
    std::string error = awaitFrame(endRequest);
    if (!error.empty())
        return error;
    configure();
    if (!window_.place(input_, key_))
        return "the scene cannot be loaded: " + lastQtWarning();
    return awaitFrame(endRequest);
}

void VideoPlayer::configure() {
    input_.setStreamType(request_.type);
    input_.setRTSPURL(request_.url);
    const bool isCamera = request_.type == ZR::StreamCamera;
    const int usual = input_.getCurrentInterface();
    (void)input_.setCurrentInterface(isCamera ? request_.camera : request_.port);
    if (isCamera)
        key_ = static_cast<unsigned short>(request_.camera);
    else
        key_ = request_.port == usual ? networkKey : changedPortKey;
    (void)input_.setMirror(key_, static_cast<ZR::ZRVideoMirrorSetting>(request_.mirror));
    (void)input_.setRotation(key_, request_.rotation);
    if (request_.brightness)
        (void)input_.setBrightness(key_, *request_.brightness);
    if (request_.contrast)
        (void)input_.setContrast(key_, *request_.contrast);
    if (request_.hue)
        (void)input_.setHue(key_, *request_.hue);
    if (request_.saturation)
        (void)input_.setSaturation(key_, *request_.saturation);
}

std::string VideoPlayer::play(const EndRequest& endRequest) {
    start_ = steady_clock::now();
    std::string error = prepare(endRequest);
    if (!error.empty())
        return error;
    (void)input_.start(0);
    start_ = steady_clock::now();
    record_.enter(PlayState::Starting, 0);
    const Deadline deadline(request_.seconds);
    while (!isFinished()) {
        step();
        if (endRequest.wait(0) || window_.isClosed())
            return conclude(true);
        if (deadline.isOver())
            break;
        window_.runFor();
    }
    return conclude(false);
}

void VideoPlayer::step() {
    input_.handleQueuedCommands();
    followPipeline();
    followState();
}

/// A restart is what gives the input another pipeline.
void VideoPlayer::followPipeline() {
    GstElement* const current = input_.getPipeline();
    if (current == pipeline_.get())
        return;
    if (pipeline_ && current != nullptr) {
        record_.countRestart();
        restartScheduled_ = false;
        record_.enter(PlayState::Starting, now(), "restart " + std::to_string(record_.restarts()));
    }
    pipeline_.reset(current == nullptr ? nullptr : GST_ELEMENT(gst_object_ref(current)));
    window_.watch(current);
}

void VideoPlayer::followState() {
    PlayNews news;
    {
        const std::lock_guard<std::mutex> lock(newsMutex_);
        news = news_;
        news_.restartIn.reset();
    }
    const PictureCounter& counter = window_.counter();
    const long long pictures = counter.pictures();
    const long long time = now();
    if (pictures > 0 && record_.pictures() == 0)
        record_.setFirstPicture(
            std::chrono::duration_cast<milliseconds>(*counter.firstPicture() - start_).count());
    const bool isNew = pictures > record_.pictures();
    record_.setPictures(pictures);
    if (isNew)
        lastNews_ = time;
    if (news.gaveUp) {
        record_.enter(PlayState::GaveUp, time, news.reason);
    } else if (news.restartIn) {
        restartScheduled_ = true;
        record_.enter(PlayState::Restarting, time,
                      "in " + std::to_string(*news.restartIn) + " ms" +
                          (news.reason.empty() ? "" : ", " + news.reason));
    } else if (restartScheduled_) {
        return;
    } else if (isNew && counter.isOpen()) {
        record_.enter(PlayState::Playing, time);
    } else if (record_.state() == PlayState::Playing &&
               (!counter.isOpen() || time - lastNews_ > standstill)) {
        record_.enter(PlayState::Waiting, time);
    }
}

bool VideoPlayer::isFinished() {
    if (record_.state() == PlayState::GaveUp)
        return true;
    if (request_.snapshot.empty() || record_.state() != PlayState::Playing)
        return false;
    failure_ = window_.save(request_.snapshot);
    if (failure_.empty())
        record_.setSnapshotWritten();
    finished_ = true;
    return true;
}

/// @param asked  the user wanted the end
std::string VideoPlayer::conclude(bool asked) const {
    if (finished_)
        return failure_;
    if (record_.state() == PlayState::GaveUp)
        return "the library gave up after " + std::to_string(record_.restarts()) + " restarts; " +
               advice(request_);
    if (record_.pictures() > 0 && request_.snapshot.empty())
        return "";
    if (asked)
        return "ended before a picture was shown";
    return "no picture within " + std::to_string(*request_.seconds) + " s; " + advice(request_);
}

}  // namespace zrctl
