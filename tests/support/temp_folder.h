#pragma once
// A temporary folder that removes itself and everything in it, also when a test fails.
#include <string>

class TempFolder {
public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return path_; }
  std::string File(const std::string& name) const { return path_ + "/" + name; }

private:
  std::string path_;
};

// Open descriptors of this process; a suite compares it before and after to find leaks.
int OpenDescriptorCount();
