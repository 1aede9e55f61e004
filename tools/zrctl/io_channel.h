#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hardware/input_output/zr_input_output.h"
#include "tools/zrctl/command.h"

namespace zrctl {

/// One kind of channel, as people name it.
struct ChannelKind {
    const char* name;  ///< "di"; of a kind with one channel the whole name
    ZR::zrIOType type;
    unsigned short channels;  ///< how many numbered ones the board can have; 0: a single one
    const char* unit;         ///< unit of the value; null for a state, which is on or off
};

/// A channel that the board can have.
struct ChannelName {
    const ChannelKind* kind;
    unsigned short number;  ///< 1-based; 0 for a kind with a single channel

    std::string text() const;
};

/// All channels that the board can have, in the order of the list.
std::vector<ChannelName> allChannels();

/// @throws UsageError for a text that names no channel; the library would take a number out of
/// range for a channel without a file, in silence
ChannelName parseChannel(const std::string& text);

/// A channel of the library, with what its interface does not tell: where it is bound.
class Channel : public ZR::ZRInputOutput {
  public:
    explicit Channel(const ChannelName& name)
        : ZRInputOutput(name.kind->type, name.number), name_(name) {}

    const ChannelName& name() const { return name_; }
    const std::string& attribute() const { return path; }
    bool isPresent() const;

    /// What became of an operation, given its result code.
    /// @param access  R_OK or W_OK: what the operation does to the attribute
    Outcome outcome(unsigned int result, int access) const;

  private:
    /// The attributes that can be behind the channel.
    std::vector<std::string> candidates() const;
    std::string advise(unsigned int result, int access) const;
    std::string adviseOnFiles(int access) const;

    ChannelName name_;
};

/// What a channel reads.
struct Reading {
    std::optional<int> value;
    Outcome outcome;
};

Reading read(Channel& channel);

/// "on", "off" or the value with its unit.
std::string valueText(const ChannelKind& kind, int value);

/// The members "channel", "present", "value" and "unit".
JsonObject channelJson(const Channel& channel, const std::optional<int>& value);

/// The report of a reading: "di1 on".
Report readingReport(const Channel& channel, const Reading& reading);

int runIoWatch(const Words& words, const CommonOptions& common);
int runIoConfigure(const Words& words, const CommonOptions& common);

}  // namespace zrctl
