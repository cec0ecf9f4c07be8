#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>

#include "support/temp_folder.h"

namespace {

// The shell on a pseudo-terminal, typed at as a person would.
class Terminal {
public:
  Terminal(const TempFolder& tmp, const char* locale) {
    std::fflush(nullptr);
    pid_ = forkpty(&fd_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
      setenv("LC_ALL", locale, 1);
      setenv("TERM", "xterm", 1);
      setenv("SONVALE_CACHE_DIR", tmp.File("cache").c_str(), 1);
      setenv("XDG_CONFIG_HOME", tmp.File("config").c_str(), 1);
      setenv("XDG_DATA_HOME", tmp.File("data").c_str(), 1);
      execl(SONVALE_BINARY, "sonvale", "shell", static_cast<char*>(nullptr));
      _exit(127);
    }
  }
  ~Terminal() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (fd_ >= 0) close(fd_);
  }
  void Type(const std::string& keys) { ASSERT_EQ(write(fd_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size())); }
  // Everything shown until text appears (or the shell ends or goes quiet for long).
  std::string Until(const std::string& text) {
    std::string seen;
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (seen.find(text) == std::string::npos && std::chrono::steady_clock::now() < giveUp) {
      pollfd p{fd_, POLLIN, 0};
      if (poll(&p, 1, 100) <= 0) continue;
      char buffer[4096];
      const ssize_t n = read(fd_, buffer, sizeof buffer);
      if (n <= 0) break;
      seen.append(buffer, static_cast<size_t>(n));
    }
    return seen;
  }
  int ExitStatus() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

private:
  int fd_ = -1;
  pid_t pid_ = -1;
};

}  // namespace

TEST(ShellTerminal, UmlautsArriveCtrlCClearsTheLineOrCancelsTheCommandAndQuitAsksAboutUnsavedWork) {
  for (const char* locale : {"C", "C.UTF-8"}) {
    TempFolder tmp;
    Terminal t(tmp, locale);
    t.Until("> ");
    t.Type("new 8000 1\n");
    t.Until("> ");
    t.Type("effect echo preset=Höhle\n");
    EXPECT_EQ(t.Until("> ").find("Voreinstellung"), std::string::npos) << locale;
    // Ctrl-C at the prompt: the half-typed line goes, the shell stays.
    t.Type("abc");
    t.Until("abc");
    t.Type("\x03");
    t.Until("> ");
    t.Type("status\n");
    const std::string status = t.Until("Cursor:");
    EXPECT_NE(status.find("Abtastrate:   8000 Hz"), std::string::npos) << locale << ": " << status;
    // Ctrl-C while a command runs cancels that command only.
    t.Type("new 44100 2\n");
    t.Until("> ");
    t.Type("generate noise 10:00\n");
    t.Until("Audio erzeugen");
    t.Type("\x03");
    EXPECT_NE(t.Until("> ").find("Abgebrochen"), std::string::npos) << locale;
    t.Type("quit\n");
    EXPECT_NE(t.Until("> ").find("nicht gespeichert"), std::string::npos) << locale;
    t.Type("quit\n");
    EXPECT_EQ(t.ExitStatus(), 0) << locale;
  }
}
