#include <array>
#include <exception>
#include <string>

#include "tools/zrctl/command.h"
#include "tools/zrctl/library_voice.h"
#include "tools/zrctl/output.h"

namespace zrctl {
namespace {

constexpr char generalHelp[] = R"(Usage: zrctl SUBCOMMAND [ARGUMENT...] [--json] [--verbose]

Reads and drives the terminal's hardware.

Subcommands:
  features    which input devices and which processor the terminal has
  io          digital and analog inputs, outputs, sensors, ignition
  dimmable    display, key and encoder illumination, RGB LED, beeper
  can         CAN ports: state, bit rate, frames
  events      what the drivers notify
  video       streams and cameras: pictures, the media controller, standards

Options, anywhere on the line:
  --json      write JSON instead of text
  --verbose, -v
              also write what the library reports, to standard error, as lines
              that start with "zrctl: library: "
  --help, -h  show this text, or with a subcommand that subcommand's
  --version   show the version

Exit status: 0 the operation succeeded, 1 it failed or the output could not be
written, 2 the command line is wrong. A failure gives one line on standard
error; with --json there is also a document on standard output, whose failed
object has a member "error".
)";

struct Subcommand {
    Command command;
    const char* help;
};

const Subcommand* findSubcommand(const std::string& name) {
    static const std::array<Subcommand, 6> subcommands{{
        {{"features", runFeatures}, featuresHelp},
        {{"io", runIo}, ioHelp},
        {{"dimmable", runDimmable}, dimmableHelp},
        {{"can", runCan}, canHelp},
        {{"events", runEvents}, eventsHelp},
        {{"video", runVideo}, videoHelp},
    }};
    for (const Subcommand& subcommand : subcommands) {
        if (name == subcommand.command.name)
            return &subcommand;
    }
    return nullptr;
}

int run(Words words, const CommonOptions& common) {
    if (common.version) {
        print("zrctl " ZRCTL_VERSION "\n");
        return statusSuccess;
    }
    const auto name = takeName(words);
    const Subcommand* const subcommand = name ? findSubcommand(*name) : nullptr;
    if (common.help && (!name || subcommand != nullptr)) {
        print(subcommand == nullptr ? generalHelp : subcommand->help);
        return statusSuccess;
    }
    if (!name)
        throw UsageError("no subcommand given; 'zrctl --help' lists them");
    if (subcommand == nullptr)
        throw UsageError("no subcommand " + quote(*name) + "; 'zrctl --help' lists them");
    const LibraryVoice voice(common.verbose);
    return subcommand->command.run(words, common);
}

/// The one line about a failure that stopped the whole command.
int fail(int status, const std::string& text, const CommonOptions& common) {
    printError(text);
    if (common.json)
        print(JsonObject().addText("error", text).text() + '\n');
    return status;
}

int runGuarded(const Words& words, const CommonOptions& common) {
    try {
        return run(words, common);
    } catch (const UsageError& error) {
        return fail(statusUsage, error.what(), common);
    } catch (const OutputError&) {
        throw;
    } catch (const std::exception& error) {
        return fail(statusFailure, std::string("stopped by an error: ") + error.what(), common);
    }
}

}  // namespace

}  // namespace zrctl

int main(int argc, char** argv) {
    using namespace zrctl;
    prepareStandardStreams();
    try {
        // A program may be started without even its own name.
        Words words(argv + (argc > 0 ? 1 : 0), argv + argc);
        const CommonOptions common = takeCommonOptions(words);
        return runGuarded(words, common);
    } catch (const OutputError& error) {
        // A reader that has left knows why; anything else is worth a line.
        if (!error.readerLeft())
            printError("cannot write to standard output: " + error.code().message());
        return statusFailure;
    } catch (const std::exception& error) {
        printError(error.what());
        return statusFailure;
    }
}
