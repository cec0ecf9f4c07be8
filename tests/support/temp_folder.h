#pragma once
// A temporary folder that removes itself and everything in it, also when a test fails.
#include <string>
#include <vector>

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

// Whole files in and out, for fixtures and for checking what a save left.
std::vector<unsigned char> FileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::vector<unsigned char>& bytes);
void WriteFileBytes(const std::string& path, const std::string& bytes);
// The names in a folder, hidden ones included, without "." and "..".
std::vector<std::string> FolderNames(const std::string& path);

// Open descriptors of this process; a suite compares it before and after to find leaks.
int OpenDescriptorCount();
