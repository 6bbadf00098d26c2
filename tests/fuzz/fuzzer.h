/// What the fuzzers share: each defines check(), which libFuzzer calls for millions of inputs.
#pragma once

#include <string>
#include <string_view>

/// Checks the rules on one input; calls broken() where one does not hold. For equal inputs it does
/// the same.
void check(std::string_view input);

/// The bytes as a C string literal without its quotes.
std::string printable(std::string_view bytes);

/// Says in plain words which rule is broken and how to run the input again, and ends the program;
/// libFuzzer then keeps the input.
[[noreturn]] void broken(std::string_view rule, const std::string &expected,
                         const std::string &got);

inline std::string shown(std::string_view text) {
  return '"' + printable(text) + '"';
}

inline std::string shown(bool value) {
  return value ? "true" : "false";
}

inline std::string shown(int value) {
  return std::to_string(value);
}

/// `rule` is what makes `expected` the only right value of `got`.
template <class Value>
void expect_equal(std::string_view rule, const Value &expected, const Value &got) {
  if (!(expected == got)) {
    broken(rule, shown(expected), shown(got));
  }
}
