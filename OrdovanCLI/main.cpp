#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Interrupts.h"

#include <QCoreApplication>

#include <unistd.h>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace {

using namespace ordovan::cli;

/// Qt remarks on locales and settings by itself. What matters to the user is said by this program.
void dropQtMessages(QtMsgType, const QMessageLogContext&, const QString&) {}

/// The event loop and what runs on it.
struct World {
    World(int& argc, char** argv, Console& console) : application(argc, argv), session(console) {}

    QCoreApplication application;
    Session session;
};

Outcome runWithEvents(int& argc, char** argv, const Invocation& invocation, Console& console, Output& output) {
    qInstallMessageHandler(dropQtMessages);
    auto world = std::make_unique<World>(argc, argv, console);
    Context context{invocation, console, output, world->session};
    Outcome outcome = runCommand(context);
    // Taking a plan of fifty thousand files apart takes longer than printing it. Nothing runs any more unless the
    // command was interrupted, so the world is left to the end of the process.
    [[maybe_unused]] static const World* left = nullptr;
    if (outcome.kind != Outcome::Kind::interrupted) left = world.release();
    return outcome;
}

/// Writes what is left of the result; a result that could not be written is none.
Outcome finished(Outcome outcome, Output& output) {
    output.flush();
    if (!output.error()) return outcome;
    std::string reason = std::strerror(*output.error());
    return Outcome::impossible("The result couldn't be written: " + reason + ".");
}

int exitStatus(const Outcome& outcome) {
    return outcome.kind == Outcome::Kind::interrupted  ? 130
           : outcome.kind == Outcome::Kind::usage      ? 2
           : outcome.kind == Outcome::Kind::impossible ? 3
           : outcome.someStayed                        ? 1
                                                       : 0;
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    interrupts::install();
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    Output output(STDOUT_FILENO);
    const auto invocation = parse(arguments);
    const bool understood = invocation.has_value();
    Console console({.isQuiet = understood && invocation->has(Option::quiet),
                     .mayColour = !understood || !invocation->has(Option::noColor)});
    Outcome outcome;
    if (!understood) {
        outcome = Outcome::usage(invocation.error());
    } else if (invocation->has(Option::help)) {
        output.buffer() += helpText(invocation->command);
    } else if (invocation->has(Option::version)) {
        output.buffer() += "ordovan-cli " ORDOVAN_VERSION "\n";
    } else {
        // The event loop gets no arguments: an option of ours must never be taken for one of its own.
        static int nameOnly = 1;
        outcome = runWithEvents(nameOnly, argv, *invocation, console, output);
        const bool isFailure = !outcome.sentence.empty() && outcome.kind != Outcome::Kind::usage;
        if (isFailure && invocation->has(Option::json)) writeJsonFailure(output, outcome.sentence);
    }
    outcome = finished(std::move(outcome), output);
    if (!outcome.sentence.empty()) console.fail(outcome.sentence);
    return exitStatus(outcome);
}
