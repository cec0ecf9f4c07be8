#include "base/safe_save.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/platform_file.h"

LSafeSave::LSafeSave(const char* target) : target_(target ? target : "") {
  if (target_.empty()) return;
  // Replacing a link would leave the file it leads to with the old content.
  written_ = LPathFollowLinks(target_.c_str());
  auto slash = written_.rfind('/');
  LStringLong folder = slash == LStringLong::npos ? "." : written_.substr(0, slash == 0 ? 1 : slash);
  LStringLong name = slash == LStringLong::npos ? written_ : written_.substr(slash + 1);
  LStringLong pattern = folder + "/." + name + ".sonvale-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  int fd = mkostemp(buffer.data(), O_CLOEXEC);
  if (fd < 0) return;
  // Keep the permissions a new file would get (mkostemp makes 0600).
  mode_t mask = umask(0);
  umask(mask);
  struct stat st {};
  fchmod(fd, ::stat(written_.c_str(), &st) == 0 ? (st.st_mode & 07777) : (0666 & ~mask));
  ::close(fd);
  temp_ = buffer.data();
}

LSafeSave::~LSafeSave() {
  if (!committed_ && !temp_.empty()) LFileDelete(temp_.c_str());
}

bool LSafeSave::Commit() {
  if (temp_.empty() || committed_) return false;
  if (!LFileReplace(temp_.c_str(), written_.c_str())) return false;
  committed_ = true;
  return true;
}

LStringLong LSafeSave::UserText(const char* text) const {
  LStringLong out = text ? text : "";
  if (temp_.empty()) return out;
  for (auto at = out.find(temp_); at != LStringLong::npos; at = out.find(temp_, at + target_.size()))
    out.replace(at, temp_.size(), target_);
  return out;
}
