/// The application of the toolkit, made so that the rest of the process does not notice.
#pragma once

namespace td {

/// Makes the application, once: loads the toolkit's plug-ins and opens the display. Threads made
/// meanwhile have all signals blocked; the environment (but for DBUS_FATAL_WARNINGS) and this
/// thread's signal mask are afterwards as they were, no program is started, no file is left, and no
/// session manager learns of this process. A session bus is used, but not `in_trial`, when it
/// answers within a second. Where the display does not work, says why on standard error, in one
/// line, and ends the process: by exit(EXIT_FAILURE), but `in_trial` by _exit(EXIT_FAILURE), so
/// that nothing runs that a process made for the trial shares with its parent. Main thread only.
void make_application(bool in_trial = false);

/// From now on `quit`, unless it is null, is called when the process ends by exit(), on the thread
/// that does so. EXIT_FAILURE becomes 0, because it means that the display is gone, unless the
/// toolkit has given up for another reason. Call it again once plug-ins may have registered exit
/// handlers, so that it precedes them; `quit` is called once all the same. Main thread only.
void quit_at_exit(void (*quit)());

/// Undoes quit_at_exit. Does not return when another thread is ending the process. Main thread
/// only.
void forget_quit_at_exit();

/// Deletes the application, once everything else is done: hands what was copied over to the
/// desktop's clipboard manager. The process ends with status 0 if the display goes meanwhile. Main
/// thread only.
void delete_application();

} // namespace td
