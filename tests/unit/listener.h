/// A listening socket for tests, and how to give it to a component.
#pragma once

#include <cstdint>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

/// Binds a free TCP port of 127.0.0.1 and, unless told otherwise, listens on it.
class Listener {
public:
  explicit Listener(bool listens = true) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    auto *const address = reinterpret_cast<sockaddr *>(&address_);
    EXPECT_EQ(bind(descriptor_, address, size), 0);
    EXPECT_EQ(getsockname(descriptor_, address, &size), 0);
    EXPECT_TRUE(!listens || listen(descriptor_, 1) == 0);
  }
  Listener(const Listener &) = delete;
  Listener &operator=(const Listener &) = delete;
  Listener(Listener &&) = delete;
  Listener &operator=(Listener &&) = delete;
  ~Listener() { close(descriptor_); }

  [[nodiscard]] int descriptor() const { return descriptor_; }
  [[nodiscard]] std::uint16_t port() const { return ntohs(address_.sin_port); }

private:
  int descriptor_ = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address_{};
};

/// Makes a descriptor the standard input, which a component inherits, for as long as this exists.
class StandardInput {
public:
  explicit StandardInput(int descriptor) { dup2(descriptor, STDIN_FILENO); }
  StandardInput(const StandardInput &) = delete;
  StandardInput &operator=(const StandardInput &) = delete;
  StandardInput(StandardInput &&) = delete;
  StandardInput &operator=(StandardInput &&) = delete;
  ~StandardInput() {
    dup2(before_, STDIN_FILENO);
    close(before_);
  }

private:
  int before_ = dup(STDIN_FILENO);
};
