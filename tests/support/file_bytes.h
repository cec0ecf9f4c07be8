#pragma once
// Whole files in and out, for fixtures and for checking what a save left.
#include <string>
#include <vector>

std::vector<unsigned char> FileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::vector<unsigned char>& bytes);
void WriteFileBytes(const std::string& path, const std::string& bytes);
// The names in a folder, hidden ones included, without "." and "..".
std::vector<std::string> FolderNames(const std::string& path);
