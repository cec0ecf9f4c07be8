#include "cli/terminal_progress.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {
volatile std::sig_atomic_t gInterrupted = 0;
// A byte per Ctrl-C, so a wait for keys wakes even when the signal came just before it.
int gInterruptPipe[2] = {-1, -1};

void OnInterrupt(int) {
  gInterrupted = 1;
  if (gInterruptPipe[1] >= 0) {
    const char byte = 1;
    (void)!write(gInterruptPipe[1], &byte, 1);
  }
}

void DrainInterruptPipe() {
  char bytes[64];
  if (gInterruptPipe[0] >= 0) {
    while (read(gInterruptPipe[0], bytes, sizeof bytes) > 0) {
    }
  }
}
}  // namespace

int TerminalProgress::InterruptFd() { return gInterruptPipe[0]; }

void TerminalProgress::InstallInterruptHandler() {
  if (gInterruptPipe[0] < 0 && pipe(gInterruptPipe) == 0) {
    for (int fd : gInterruptPipe) {
      fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
      fcntl(fd, F_SETFD, FD_CLOEXEC);
    }
  }
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
}

bool TerminalProgress::Interrupted() { return gInterrupted != 0; }

void TerminalProgress::ResetInterrupt() {
  gInterrupted = 0;
  DrainInterruptPipe();
}

TerminalProgress::TerminalProgress(bool quiet) : quiet_(quiet), tty_(isatty(STDERR_FILENO) != 0) {}

TerminalProgress::~TerminalProgress() { Finish(); }

bool TerminalProgress::IsCancelled() { return gInterrupted != 0; }

void TerminalProgress::Reset() {
  ResetInterrupt();
  lastShown_ = -1;
  lastDecile_ = -1;
}

void TerminalProgress::SetStatus(const char* text, int line) {
  if (lastShown_ < 0) start_ = std::chrono::steady_clock::now();
  status_[line == 0 ? 0 : 1] = text ? text : "";
  if (tty_ && drawn_) Draw();
}

void TerminalProgress::SetProgress(double fraction) {
  if (quiet_) return;
  int percent = static_cast<int>(fraction * 100.0 + 0.5);
  if (percent < 0) percent = 0;
  if (percent > 100) percent = 100;
  if (percent == lastShown_) return;
  lastShown_ = percent;
  Draw();
}

void TerminalProgress::Draw() {
  if (quiet_ || lastShown_ < 0) return;
  std::string title = status_[0];
  if (!status_[1].empty()) title += title.empty() ? status_[1] : " – " + status_[1];
  if (tty_) {
    constexpr int kWidth = 30;
    int filled = lastShown_ * kWidth / 100;
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(kWidth - filled), '.');
    std::fprintf(stderr, "\r\033[K%s [%s] %3d %%", title.c_str(), bar.c_str(), lastShown_);
    std::fflush(stderr);
    drawn_ = true;
  } else if (lastShown_ / 10 != lastDecile_ && std::chrono::steady_clock::now() - start_ > std::chrono::seconds(1)) {
    // Without a terminal: one line per tenth of a job that takes a while, so logs stay short.
    lastDecile_ = lastShown_ / 10;
    std::fprintf(stderr, "%s: %d %%\n", title.empty() ? "Fortschritt" : title.c_str(), lastShown_);
  }
}

void TerminalProgress::SetError(const char* text) { error_ = text ? text : ""; }

void TerminalProgress::Finish() {
  if (tty_ && drawn_) {
    std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
  }
  drawn_ = false;
  lastShown_ = -1;
  lastDecile_ = -1;
}
