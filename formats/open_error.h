#pragma once
// The German message that the file openers show for an open error code.
#include <string>

// code: the error code of the source an opener returned; codec names the missing
// codec for kLSourceCodecMissing (a generic name is used when it is null). Empty for code 0.
[[nodiscard]] std::string LOpenErrorMessage(unsigned char code, const char* path, const char* codec = nullptr);
