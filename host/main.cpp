// The command-line host: loads the decoder module and puts it to use.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/console.h"
#include "host/exit_codes.h"
#include "host/failure.h"

namespace atdp::host {
namespace {

// The arguments as the parser takes them: last one first. It would split one that stands in
// brackets like a list; a file of such a name is found just as well under ./NAME.
std::vector<std::string> parserArguments(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::string& argument : arguments) {
        if (argument.starts_with('[') && argument.ends_with(']')) argument.insert(0, "./");
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

int runCommandLine(int argc, char** argv) {
    CLI::App app("Decodes sound files with the AudioToolboxDecoderPlugin module.", "atdp");
    app.set_version_flag("--version", "atdp " ATDP_VERSION);
    app.fallthrough();  // --plugin is understood after the command as well
    app.require_subcommand(1);
    std::string modulePath;
    app.add_option("--plugin", modulePath, "The module to load")->type_name("PATH");

    Command command;
    addDescribeCommand(app, command);
    addProbeCommand(app, command);
    addInfoCommand(app, command);
    addDecodeCommand(app, command);
    addPlayCommand(app, command);
    addEdgesCommand(app, command);
    try {
        app.parse(parserArguments(argc, argv));
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        throw UsageError(std::string(error.what()) + " (see atdp --help)");
    }
    PluginModule module(modulePath.empty() ? defaultModulePath() : modulePath);
    return command(module);
}

int run(int argc, char** argv) {
    try {
        return runCommandLine(argc, argv);
    } catch (const UsageError& error) {
        printError(error.what());
        return kExitWrongUsage;
    } catch (const ClosedPipe&) {
        return kExitOk;
    } catch (const Interrupted&) {
        return kExitInterrupted;
    } catch (const std::bad_alloc&) {
        printError("out of memory");
    } catch (const std::exception& error) {
        printError(error.what());
    }
    return kExitFailed;
}

}  // namespace
}  // namespace atdp::host

int main(int argc, char** argv) {
    // Writing to a closed pipe, or past a limit of file size, is an error like others.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    return atdp::host::run(argc, argv);
}
