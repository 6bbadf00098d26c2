/// What the alert's command must be for any message, seen as the words that the shell makes of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The message of the command whose words every other command is compared with.
inline const std::string reference_message = "text";

/// The words of a shell's command line without their quotes, in the order of the line; ";" and a
/// line feed are words too. Stops the fuzzer where a shell would do more with the line than take it
/// apart: an expansion, a substitution, a pipe, a quote that is not closed.
std::vector<std::string> shell_words(std::string_view line);

/// The text in a double-quoted string of AppleScript. Stops the fuzzer where the string would end
/// early or holds an escape that stands for something else than its second character.
std::string script_text(std::string_view quoted);

/// Compares the words of the command for `message` with those for reference_message: only the
/// message may differ, and each tool must show it as it is.
void check_words(const std::vector<std::string> &words, const std::vector<std::string> &reference,
                 const std::string &message);
