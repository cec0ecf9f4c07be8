#pragma once
// sonvale record OUT [--seconds S] [--rate R] [--channels C] [--device NAME]:
// records into the sound cache and saves to OUT; Ctrl-C ends the recording and keeps it.
#include <string>
#include <vector>

[[nodiscard]] int RunRecordCommand(const std::vector<std::string>& args);
