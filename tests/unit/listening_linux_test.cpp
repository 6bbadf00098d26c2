// The session of its own is made with util-linux's setsid.

#include "listener.h"
#include "listening.h"
#include "listening_fixture.h"

namespace {

TEST_F(Listening, IsSeenInADescendantWhoseParentHasEnded) {
  const Listener listener;
  const StandardInput input(listener.descriptor());
  // In a session of its own, as a component is.
  const std::string script = folder.write("script", "exec 3<&0 </dev/null\n"
                                                    "( " +
                                                        wait_command +
                                                        " <&3 >/dev/null 3<&- & )\n"
                                                        "exec 3<&-; echo; exec " +
                                                        wait_command);
  start("exec setsid sh " + script);
  EXPECT_FALSE(certainly_not_listening(child.pid, listener.port()));
}

} // namespace
