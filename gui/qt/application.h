/// The application of the toolkit, made so that the rest of the process does not notice.
#pragma once

namespace td {

/// Makes the application, once: loads the toolkit's plug-ins and opens the display. Its threads
/// have all signals blocked; the environment (but for DBUS_FATAL_WARNINGS) and this thread's signal
/// mask are kept, no program is started, no file is left, and no session manager learns of it. A
/// session bus is used when it answers within a second, but not `in_trial`. Where the display does
/// not work, says why in one line on standard error and ends the process: by exit(EXIT_FAILURE),
/// but `in_trial` by _exit(EXIT_FAILURE), without the parent's exit handlers. Main thread only.
void make_application(bool in_trial = false);

/// From now on `quit`, unless it is null, is called when the process ends by exit(), on the thread
/// that does so. EXIT_FAILURE becomes 0, because it means that the display is gone, unless the
/// toolkit has given up for another reason. Call it again once plug-ins may have registered exit
/// handlers, so that it precedes them; `quit` is called once all the same. Main thread only.
void quit_at_exit(void (*quit)());

} // namespace td
