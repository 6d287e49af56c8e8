#pragma once

/// Requests from outside to stop: Ctrl-C (SIGINT), SIGTERM and SIGHUP. They never end the program by themselves. For a
/// front end, on its main thread.
namespace ordovan::interrupts {

/// Starts to note them. Signals that were ignored when the program was started (nohup) stay ignored. A lost reader of
/// the output (SIGPIPE) becomes an ordinary error from here on.
void install();

/// True once one has arrived.
[[nodiscard]] bool requested();

/// Becomes readable whenever one has arrived. -1 where the system had no pipe to give.
[[nodiscard]] int descriptor();

/// Empties the descriptor, so that it becomes readable at the next one.
void drain();

/// How many have arrived: for who waits and wants to know whether one came meanwhile.
[[nodiscard]] int count();

/// From here on the next one ends the program at once, with this exit status and without anything that an ordinary end
/// does: for when there is nothing left to finish.
void letThemEndTheProgram(int exitStatus);

}  // namespace ordovan::interrupts
