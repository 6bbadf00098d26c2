/// Messages with characters that are special to a shell, in a double-quoted string of a script or
/// to a terminal.
#pragma once

#include <array>

constexpr std::array special_messages = {
    "text",
    "double \"quotes\" and back\\slashes\\",
    "\\\"",
    "$(touch pwned) `touch pwned` ${HOME} $HOME",
    "a;touch pwned;b & touch pwned | touch pwned",
    "\"; do shell script \"touch pwned",
    "line\nfeed\ttab",
    "Größe – 音",
    "%s%n%d <b>&amp;<i>",
    "-dash !! * ?",
    "\xff\xfe",
    "two\nlines \"q\" \\n $x `y` <b> %s \x80é",
};
