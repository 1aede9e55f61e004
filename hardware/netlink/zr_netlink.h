#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "common/zrapi_common/zr_end_point.h"
#include "common/zrapi_common/zr_end_point_handler.h"
#include "common/zrapi_common/zr_end_point_manager.h"
#include "common/zrapi_common/zr_event_queue.h"
#include "common/zrapi_export.h"

namespace ZR {

struct NotificationValues;

/// A driver's notifications: a generic netlink socket that has joined the driver's group.
class ZRAPI_EXPORT ZRNetlinkEndPoint : public ZREndPoint {
  public:
    /// Connects. A failure prints the reason and "Connecting to generic netlink event interface N
    /// failed, disabling event handling" to standard output and leaves an end point that is not
    /// connected.
    /// @param familyName  the driver's generic netlink family
    explicit ZRNetlinkEndPoint(const std::string& familyName);

    /// Leaves the socket open on purpose: end points live as long as the process, and so do their
    /// sockets, whoever still knows the number.
    ~ZRNetlinkEndPoint() override;

    /// Returns the socket, -1 without one.
    int getReadEndPointID() const override;
    int getWriteEndPointID() const override;
    bool isConnected() const override;

    /// Not supported, on purpose: a driver that comes back has another family number.
    /// @return 11 always
    unsigned int reconnect() override;

  protected:
    friend class ZRNetlink;

    std::string familyName;
    int familyId = 0;  ///< as event_if_connect() left it: -1 for a family that was not resolved
    int socketFd = -1;
    bool connected = false;
};

/// Turns the drivers' notifications into events on the application's queue.
///
/// Families: "ZR_DI" (digital inputs), "ZR_DO" (digital outputs), "ANALOG" (analog inputs and
/// sensors). In order: instance(), setEndPointManager(), addEventQueue(), addFamily() for each
/// family, addAllEndpointsToEndpointManager(). From then on each notification becomes one ZRSignal
/// of kind 6 and code 900, posted from the manager's thread. Messages that do not hold together are
/// dropped without a word.
///
/// | Family | `value1` | `value2` |
/// |---|---|---|
/// | ZR_DI | attribute 1 | attribute 3 |
/// | ZR_DO | attribute 1; 0, 1 and 2 become 16, 17 and 18 | attribute 3 |
/// | ANALOG, "ai.0" to "ai.3" | 0x10000 to 0x10003 | reading |
/// | ANALOG, supply or battery voltage | 4 | reading |
/// | ANALOG, temperature | 5 | reading |
/// | ANALOG, light | 6 | reading, at most 1000 |
/// | ANALOG, frequency | 256 | reading |
/// | ANALOG, any other name | 0xFFFFFFFF | reading |
///
/// A digital value that the driver left out is 0xFFFFFFFF. A burst of notifications that the
/// socket's buffer cannot hold is lost with one ENOBUFS, which nothing tells of: read the state anew
/// where that matters.
///
/// No locks: set everything up on one thread before the end points go to the manager.
class ZRAPI_EXPORT ZRNetlink : public ZREndPointHandler {
  public:
    /// Returns the one dispatcher, built on first use and destroyed at process exit. Stop the
    /// manager before that.
    static ZRNetlink* instance();

    ZRNetlink(const ZRNetlink&) = delete;
    ZRNetlink& operator=(const ZRNetlink&) = delete;

    /// Takes one notification off an end point and posts its event. Called by the manager; an end
    /// point that is null, no ZRNetlinkEndPoint or not one of addFamily() is ignored.
    void onEndPointReadable(std::shared_ptr<ZREndPoint> endPoint,
                            ZREndPointManager* manager) override;
    /// Does nothing.
    void onEndPointReconnected(std::shared_ptr<ZREndPoint> endPoint) override;
    /// Does nothing.
    void onEndPointDisconnected(std::shared_ptr<ZREndPoint> endPoint) override;

    ~ZRNetlink() override;

    /// Connects to a driver's notifications.
    /// @param name  family; any name is connected to, those of getFamilyName() have events
    /// @return 0 success, also when the connection failed (its end point is then not connected),
    ///         25 added before
    unsigned int addFamily(const std::string& name);

    /// Gives all end points to the manager, with this object as their handler. Without a manager
    /// it does nothing.
    void addAllEndpointsToEndpointManager();

    /// Sets the one queue that events go to; a second one replaces it. Without a queue
    /// notifications are read and dropped.
    /// @param queue  set before the end points go to the manager; outlives its thread; null for
    ///               none
    void addEventQueue(ZREventQueue* queue);

    /// Sets the manager that waits on the sockets.
    /// @param manager  kept, not owned
    void setEndPointManager(ZREndPointManager* manager);

    /// Names the families that have events.
    /// @param index  0 "ANALOG", 1 "ZR_DI", 2 "ZR_DO"
    /// @return the name, static, or null for any other index
    static const char* getFamilyName(int index);

    /// Takes one message and posts its event; nothing happens when none waits.
    /// @param endPoint  connected end point; must not be null
    void handleDigitalInputEndpoint(std::shared_ptr<ZRNetlinkEndPoint> endPoint);
    /// As handleDigitalInputEndpoint().
    void handleDigitalOutputEndpoint(std::shared_ptr<ZRNetlinkEndPoint> endPoint);
    /// As handleDigitalInputEndpoint(); a reading that the driver does not call valid gives no
    /// event.
    void handleAnalogInputEndpoint(std::shared_ptr<ZRNetlinkEndPoint> endPoint);

  protected:
    ZRNetlink();

    std::map<std::string, std::shared_ptr<ZRNetlinkEndPoint>> endPoints;
    std::set<std::shared_ptr<ZRNetlinkEndPoint>> endPointSet;
    ZREventQueue* eventQueue = nullptr;
    ZREndPointManager* endPointManager = nullptr;

  private:
    void post(const NotificationValues& values);
};

}  // namespace ZR
