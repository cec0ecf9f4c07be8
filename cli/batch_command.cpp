#include "cli/batch_command.h"

#include <csignal>
#include <cstdio>
#include <map>
#include <set>

#include "base/child_process.h"
#include "base/platform_file.h"
#include "app/command_line.h"
#include "cli/editor_session.h"
#include "cli/terminal_progress.h"
#include "formats/sound_file.h"

namespace {

std::string BaseName(const std::string& path) {
  auto slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// DIR/name with the extension of the target format (the input's own when none is named).
std::string TargetPath(const std::string& dir, const std::string& input, const std::string& to) {
  std::string name = BaseName(input);
  LSoundFileKind kind;
  if (!to.empty()) {
    LSoundFileLayout layout;
    const char* ext = LSoundFileLayoutFromName(to.c_str(), &layout) ? "wav"
                      : LSoundFileKindFromName(to.c_str(), &kind) ? LSoundFileKindName(kind)
                                                                   : nullptr;
    if (ext) {
      auto dot = name.rfind('.');
      name = (dot == std::string::npos ? name : name.substr(0, dot)) + "." + ext;
    }
  }
  return dir + "/" + name;
}

// The target of every input. Inputs of the same name from different folders would
// end in one file, so later ones are numbered (take.wav, take_2.wav, ...), never
// onto a name that another input has by itself. Made over all inputs, before
// sharding, so every machine of a shard names alike.
std::vector<std::string> TargetPaths(const std::string& dir, const std::vector<std::string>& inputs,
                                     const std::string& to) {
  std::set<std::string> own, taken;
  for (const std::string& input : inputs) own.insert(TargetPath(dir, input, to));
  std::vector<std::string> targets;
  for (const std::string& input : inputs) {
    std::string target = TargetPath(dir, input, to);
    if (taken.count(target)) {
      const auto dot = target.rfind('.');
      const bool hasExt = dot != std::string::npos && dot > dir.size();
      const std::string stem = hasExt ? target.substr(0, dot) : target;
      const std::string ext = hasExt ? target.substr(dot) : "";
      for (int n = 2;; ++n) {
        target = stem + "_" + std::to_string(n) + ext;
        if (!taken.count(target) && !own.count(target)) break;
      }
    }
    taken.insert(target);
    targets.push_back(target);
  }
  return targets;
}

// One file, in a process of its own, so that files never share state.
int RunOne(const std::string& input, const std::vector<std::string>& commands, const std::string& target,
           const std::string& to) {
  EditorSession session(false, true);
  int status = session.OpenDocument(input);
  for (std::size_t i = 0; status == kCommandOK && i < commands.size(); ++i) status = session.ExecuteLine(commands[i]);
  if (status == kCommandOK) status = session.SaveCurrent(target, to);
  return status;
}

}  // namespace

int RunBatchCommand(const std::vector<std::string>& args) {
  CommandOptions parsed;
  if (!ParseOptions(args, "batch", "-j= -e= --chain= --to= --out= --shard=", &parsed)) return kCommandFailed;
  const std::vector<std::string>& files = parsed.words;
  const std::string out = parsed.Value("--out"), to = parsed.Value("--to");
  std::vector<std::string> commands;
  double jobs = 1;
  long shardIndex = 1, shardCount = 1;
  for (const auto& [name, value] : parsed.options) {
    if (name == "-e") commands.push_back(value);
    if (name == "--chain") commands.push_back("chain \"" + value + "\"");
  }
  if (parsed.Has("-j") && (!ParseNumber(parsed.Value("-j"), &jobs) || jobs < 1 || jobs > 64)) {
    PrintError("-j erwartet 1 bis 64 gleichzeitige Dateien.");
    return kCommandFailed;
  }
  if (parsed.Has("--shard") &&
      (std::sscanf(parsed.Value("--shard").c_str(), "%ld/%ld", &shardIndex, &shardCount) != 2 || shardCount < 1 ||
       shardIndex < 1 || shardIndex > shardCount)) {
    PrintError("--shard erwartet K/N mit 1 ≤ K ≤ N, zum Beispiel 2/4.");
    return kCommandFailed;
  }
  if (out.empty() || !LFolderExists(out.c_str())) {
    PrintError("batch braucht mit --out einen vorhandenen Zielordner.");
    return kCommandFailed;
  }
  if (commands.empty()) {
    PrintError("batch braucht --chain DATEI.ecf oder mindestens ein -e BEFEHLE.");
    return kCommandFailed;
  }
  if (!to.empty()) {
    LSoundFileFormat probe;
    if (!LSoundFileLayoutFromName(to.c_str(), &probe.layout) && !LSoundFileKindFromName(to.c_str(), &probe.kind)) {
      PrintError("Unbekanntes Format \"" + to + "\".");
      return kCommandFailed;
    }
  }
  // Every machine of a shard takes every N-th file, counted from K.
  const std::vector<std::string> targets = TargetPaths(out, files, to);
  std::vector<std::size_t> mine;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (static_cast<long>(i % static_cast<std::size_t>(shardCount)) != shardIndex - 1) continue;
    mine.push_back(i);
    if (targets[i] != TargetPath(out, files[i], to)) {
      std::printf("Hinweis: %s wird als %s gespeichert, weil eine andere Datei gleich heißt.\n", files[i].c_str(),
                  BaseName(targets[i]).c_str());
    }
  }
  if (mine.empty()) {
    std::printf("Keine Dateien für diesen Teil.\n");
    return kCommandOK;
  }

  std::map<int, std::string> running;
  std::vector<std::string> failed;
  int done = 0, cancelled = 0;
  auto reap = [&] {
    LChildEnd end;
    if (!LChildWaitAny(&end)) {
      // No child left to wait for: those still listed can no longer report.
      for (const auto& [id, file] : running) failed.push_back(file);
      running.clear();
      return;
    }
    const auto found = running.find(end.id);
    if (found == running.end()) return;
    const std::string file = found->second;
    running.erase(found);
    const int code = end.code >= 0 ? end.code : kCommandFailed;
    if (code == kCommandOK) {
      ++done;
    } else if (code == kCommandCancelled) {
      ++cancelled;
    } else {
      failed.push_back(file);
    }
  };
  for (std::size_t i : mine) {
    const std::string& file = files[i];
    if (TerminalProgress::Interrupted()) break;
    while (running.size() >= static_cast<std::size_t>(jobs)) reap();
    const int pid = LChildStartCopy([&] { return RunOne(file, commands, targets[i], to); });
    if (pid < 0) {
      failed.push_back(file);
      continue;
    }
    running[pid] = file;
  }
  while (!running.empty()) reap();

  std::printf("Stapelverarbeitung: %d erfolgreich, %zu fehlgeschlagen", done, failed.size());
  if (cancelled) std::printf(", %d abgebrochen", cancelled);
  std::printf(" (von %zu Dateien).\n", mine.size());
  for (const std::string& f : failed) std::printf("  fehlgeschlagen: %s\n", f.c_str());
  if (!failed.empty()) return kCommandFailed;
  return (cancelled || TerminalProgress::Interrupted()) ? kCommandCancelled : kCommandOK;
}
