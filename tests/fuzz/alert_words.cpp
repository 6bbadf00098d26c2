#include "alert_words.h"

#include "fuzzer.h"

namespace {

constexpr std::string_view script_start = R"(display alert "Tandrel" message ")";
constexpr std::string_view script_end = "\" as critical";

bool is_script(std::string_view word) {
  return word.size() >= script_start.size() + script_end.size() &&
         word.substr(0, script_start.size()) == script_start &&
         word.substr(word.size() - script_end.size()) == script_end;
}

/// A line that is read from its start, by the rules of the POSIX shell.
class ShellReader {
public:
  explicit ShellReader(std::string_view line) : m_line(line) {}

  std::vector<std::string> words() {
    while (m_at < m_line.size()) {
      read_unquoted(m_line[m_at++]);
    }
    end_word();
    return m_words;
  }

private:
  [[noreturn]] void refuse(const std::string &found) const {
    broken("The shell takes the command apart into words and does nothing else with the message.",
           "only words", found + " in " + shown(m_line));
  }

  void end_word() {
    if (m_redirects && m_word != ">/dev/null" && m_word != "2>&1") {
      refuse("the operator " + shown(m_word));
    }
    if (m_in_word) {
      m_words.push_back(m_word);
    }
    m_word.clear();
    m_in_word = m_redirects = false;
  }

  void read_unquoted(char c) {
    if (c == ' ' || c == '\t') {
      end_word();
    } else if (c == ';' || c == '\n') {
      end_word();
      m_words.emplace_back(1, c);
    } else if (std::string_view("$`\"\\*?[~#()|<{}!").find(c) != std::string_view::npos) {
      refuse(std::string("an unquoted ") + c);
    } else if (c == '\'') {
      read_single_quoted();
    } else {
      m_redirects = m_redirects || c == '>' || c == '&';
      m_in_word = true;
      m_word += c;
    }
  }

  void read_single_quoted() {
    const std::size_t end = m_line.find('\'', m_at);
    if (end == std::string_view::npos) {
      refuse("a single quote that is not closed");
    }
    m_in_word = true;
    m_word += m_line.substr(m_at, end - m_at);
    m_at = end + 1;
  }

  std::string_view m_line;
  std::size_t m_at = 0;
  std::vector<std::string> m_words;
  std::string m_word;
  bool m_in_word = false;   // also true for ''
  bool m_redirects = false; // holds an unquoted > or &
};

/// The text that kdialog shows: a backslash and the next character stand for one character.
std::string kdialog_text(std::string_view argument) {
  std::string text;
  for (std::size_t at = 0; at < argument.size(); ++at) {
    text += argument[at];
    if (argument[at] == '\\' && argument.substr(++at, 1) != "\\") {
      broken("kdialog shows each backslash of the message as one.", "only \\\\", shown(argument));
    }
  }
  return text;
}

} // namespace

std::vector<std::string> shell_words(std::string_view line) {
  return ShellReader(line).words();
}

std::string script_text(std::string_view quoted) {
  std::string text;
  for (std::size_t at = 0; at < quoted.size(); ++at) {
    const bool escape = quoted[at] == '\\';
    at += escape ? 1 : 0;
    const char c = at < quoted.size() ? quoted[at] : 'x';
    if (escape != (c == '"' || c == '\\')) {
      broken("In the script each backslash and double quote of the message is escaped, and nothing "
             "else.",
             R"(\\ and \" only)", shown(quoted));
    }
    text += c;
  }
  return text;
}

void check_words(const std::vector<std::string> &words, const std::vector<std::string> &reference,
                 const std::string &message) {
  expect_equal("The message is one word of the command, whatever it holds.",
               static_cast<int>(reference.size()), static_cast<int>(words.size()));
  int shown_by = 0;
  for (std::size_t i = 0; i < words.size(); ++i) {
    std::string text = words[i];
    const bool script = is_script(reference[i]);
    if (script && is_script(text)) {
      text =
          text.substr(script_start.size(), text.size() - script_start.size() - script_end.size());
      text = script_text(text);
    } else if (reference[i] == reference_message && reference[i - 1] == "--error") {
      text = kdialog_text(text);
    }
    const bool holds_message = script || reference[i] == reference_message;
    expect_equal("Each tool shows the message as it is, and the rest of the command never changes.",
                 holds_message ? message : reference[i], text);
    shown_by += holds_message ? 1 : 0;
  }
  expect_equal("osascript, zenity, kdialog and xmessage each get the message.", 4, shown_by);
}
