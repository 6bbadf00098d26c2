/// The application of the toolkit, made so that the rest of the process does not notice.
#pragma once

namespace td {

/// Makes the application, which loads the toolkit's plug-ins and opens the display; nothing if
/// there is one already. The toolkit's and the plug-ins' threads have all signals blocked, the
/// environment and this thread's signal mask are afterwards as they were, no program is started,
/// and no session manager learns of this process. Where the display does not work, the toolkit ends
/// the process: by exit(EXIT_FAILURE). Main thread only.
void make_application();

/// Makes the application in a process whose end does not matter: where the display does not work,
/// it says why on standard error, in one line, and ends by _exit(EXIT_FAILURE), so that nothing
/// runs that this process shares with its parent. Returns when the display works. Main thread only.
void try_application();

/// From now on `quit` is called, unless it is null, when the process ends by exit(): the toolkit
/// calls that when the display is gone. The process's status is 0 then, EXIT_FAILURE when the
/// toolkit has given up for another reason. May be called again; `quit` is called once all the
/// same. Main thread only.
void quit_at_exit(void (*quit)());

/// Undoes quit_at_exit.
void forget_quit_at_exit();

} // namespace td
