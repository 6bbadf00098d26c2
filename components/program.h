/// The four programs of the suite.
#pragma once

namespace standin {

enum class Program { hub, receiver, sender, align };

/// The program's file name, such as "td_hub". A string literal.
inline const char *program_name(Program program) {
  switch (program) {
  case Program::hub:
    return "td_hub";
  case Program::receiver:
    return "td_receiver";
  case Program::sender:
    return "td_sender";
  case Program::align:
    return "td_align";
  }
  return "";
}

} // namespace standin
