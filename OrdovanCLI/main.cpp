#include "OrdovanCLI/Commands.h"
#include "OrdovanCLI/Format.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <QCoreApplication>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
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

/// `isAtRest`: whether nothing goes on in the background any more.
Outcome runWithEvents(int& argc, char** argv, const Invocation& invocation, Console& console, Output& output,
                      bool& isAtRest) {
    qInstallMessageHandler(dropQtMessages);
    // Taking a plan of fifty thousand files apart takes longer than printing it, so the world is left to the end of the
    // process.
    static World* const world = new World(argc, argv, console);
    Context context{invocation, console, output, world->session, false};
    Outcome outcome = runCommand(context);
    output.flush();
    isAtRest = outcome.kind != Outcome::Kind::interrupted && world->session.finish();
    for (const auto& [file, to] : world->session.allSetAside()) {
        console.warn(inQuotes(file.path()) + " couldn't be read. It was set aside as " +
                     inQuotes(to.lastPathComponent()) + ".");
        context.isFlawed = true;
    }
    outcome.isFlawed |= context.isFlawed;
    return outcome;
}

/// Writes what is left of the result. Where that fails, what was changed is changed all the same; without a change
/// nothing was done.
Outcome finished(Outcome outcome, Output& output) {
    output.flush();
    if (!output.error() || !outcome.sentence.empty()) return outcome;
    const std::string reason = std::strerror(*output.error());
    if (!outcome.didChange) return Outcome::impossible("The result couldn't be written: " + reason + ".");
    outcome.isFlawed = true;
    outcome.sentence = "It was done, but the result couldn't be written: " + reason + ".";
    return outcome;
}

int exitStatus(const Outcome& outcome) {
    return outcome.kind == Outcome::Kind::interrupted  ? exitInterrupted
           : outcome.kind == Outcome::Kind::usage      ? exitUsage
           : outcome.kind == Outcome::Kind::impossible ? exitImpossible
           : outcome.isFlawed                          ? exitFlawed
                                                       : exitDone;
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    ordovan::interrupts::install();
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    Output output(STDOUT_FILENO);
    const auto invocation = parse(arguments);
    const bool understood = invocation.has_value();
    Console console({.isQuiet = understood && invocation->has(Option::quiet),
                     .mayColor = !understood || !invocation->has(Option::noColor)});
    Outcome outcome;
    bool isAtRest = true;
    if (!understood) {
        outcome = Outcome::usage(invocation.error());
    } else if (invocation->has(Option::help)) {
        const std::string help = helpText(invocation->command);
        invocation->has(Option::json) ? writeJsonText(output, "help", help) : void(output.buffer() += help);
    } else if (invocation->has(Option::version)) {
        invocation->has(Option::json) ? writeJsonText(output, "version", ORDOVAN_VERSION)
                                      : void(output.buffer() += "ordovan-cli " ORDOVAN_VERSION "\n");
    } else {
        // The event loop gets no arguments: an option of ours must never be taken for one of its own.
        static int nameOnly = 1;
        outcome = runWithEvents(nameOnly, argv, *invocation, console, output, isAtRest);
        const bool isFailure = !outcome.sentence.empty() && outcome.kind != Outcome::Kind::usage;
        if (isFailure && invocation->has(Option::json)) writeJsonText(output, "error", outcome.sentence);
    }
    outcome = finished(std::move(outcome), output);
    if (!outcome.sentence.empty()) console.fail(outcome.sentence);
    // Another thread may still be reading or waiting for a lock; nobody waits for that, and it must not outlive what
    // the ordinary end of a program takes down.
    if (!isAtRest) std::_Exit(exitStatus(outcome));
    return exitStatus(outcome);
}
