#include "app/window_manager.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "app/app_settings.h"
#include "base/user_settings.h"

namespace {

void ReplaceAll(LStringLong& text, const LStringLong& what, const LStringLong& with) {
  for (std::size_t at = text.find(what); at != LStringLong::npos; at = text.find(what, at + with.size()))
    text.replace(at, what.size(), with);
}

// Expands a format whose only conversions are "%%" and "%i".
LStringLong FormatNumber(const LStringLong& format, int number) {
  LStringLong out;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] == '%' && i + 1 < format.size() && format[i + 1] == 'i') {
      out += std::to_string(number);
      ++i;
    } else if (format[i] == '%' && i + 1 < format.size() && format[i + 1] == '%') {
      out += '%';
      ++i;
    } else {
      out += format[i];
    }
  }
  return out;
}

}  // namespace

SVFileGUI* SVWindowManager::FileWindowAdd(LCountedPtr<SVFile> file, const char* wanted, bool withoutExtension,
                                          int tab) {
  auto window = std::make_unique<SVFileGUI>(*this, std::move(file));
  LStringLong title;
  EnsureUniqueFileWindowTitle(title, wanted ? wanted : "", withoutExtension);
  window->TitleSet(title);
  if (window->File()) window->File()->RegionListSet(project_.RegionListPtr());
  if (tab < 0 || tab >= TabCount()) {
    tabs_.emplace_back();
    tab = TabCount() - 1;
  }
  SVFileGUI* added = window.get();
  tabs_[static_cast<std::size_t>(tab)].push_back(std::move(window));
  current_ = added;
  ProjectDocumentsUpdate();
  return added;
}

void SVWindowManager::FileWindowClose(SVFileGUI* window) {
  const int tab = TabOf(window);
  if (tab < 0) return;
  Tab& windows = tabs_[static_cast<std::size_t>(tab)];
  for (auto it = windows.begin(); it != windows.end(); ++it) {
    if (it->get() != window) continue;
    windows.erase(it);
    break;
  }
  if (windows.empty()) tabs_.erase(tabs_.begin() + tab);
  if (current_ == window) current_ = tabs_.empty() ? nullptr : tabs_.back().back().get();
  ProjectDocumentsUpdate();
}

int SVWindowManager::TabFileWindowCount(int tab) const {
  return tab >= 0 && tab < TabCount() ? static_cast<int>(tabs_[static_cast<std::size_t>(tab)].size()) : 0;
}

SVFileGUI* SVWindowManager::FileWindowAt(int tab, int index) const {
  if (index < 0 || index >= TabFileWindowCount(tab)) return nullptr;
  return tabs_[static_cast<std::size_t>(tab)][static_cast<std::size_t>(index)].get();
}

int SVWindowManager::TabOf(const SVFileGUI* window) const {
  for (std::size_t t = 0; t < tabs_.size(); ++t) {
    for (const auto& w : tabs_[t])
      if (w.get() == window) return static_cast<int>(t);
  }
  return -1;
}

int SVWindowManager::FileWindowCount() const {
  int count = 0;
  for (const Tab& tab : tabs_) count += static_cast<int>(tab.size());
  return count;
}

bool SVWindowManager::HasFileWindowTitled(const char* title) const {
  for (const Tab& tab : tabs_) {
    for (const auto& window : tab)
      if (window->Title() == title) return true;
  }
  return false;
}

void SVWindowManager::ProjectDocumentsUpdate() {
  LArray<LCountedPtr<SVFile>> documents;
  for (const Tab& tab : tabs_) {
    for (const auto& window : tab)
      if (window->FilePtr()) documents.push_back(window->FilePtr());
  }
  project_.DocumentsSet(std::move(documents));
}

bool SVWindowManager::CheckMaxFiles() {
  // The window about to open counts too: the 45th is refused, the 44th is the last allowed.
  if (FileWindowCount() + 1 < kSVMaxFileWindows) return true;
  frontEnd_.Alert(kSVMaxFilesTitle, kSVMaxFilesText);
  LUserSettings& settings = LUserSettings::Instance();
  settings.Set(kLUsageStatsDomain, kSVUsageStatsSection, kSVUsageLastFailed, kSVUsageMaxFilesFailed);
  settings.Set(kLUsageStatsDomain, kSVUsageStatsSection, kSVUsageLastFailedReason, kSVUsageMaxFilesReason);
  return false;
}

void SVWindowManager::EnsureUniqueFileWindowTitle(LStringLong& out, const char* wanted, bool withoutExtension) const {
  const LStringLong title = wanted ? wanted : "";
  if (!HasFileWindowTitled(title.c_str())) {
    out = title;
    return;
  }
  LStringLong name = title;
  LStringLong extension;
  if (!withoutExtension) {
    const std::size_t dot = title.rfind('.');
    if (dot != LStringLong::npos && dot > 0) {
      name = title.substr(0, dot);
      extension = title.substr(dot);
    }
  }

  std::size_t digits = name.size();
  while (digits > 0 && std::isdigit(static_cast<unsigned char>(name[digits - 1]))) --digits;
  LStringLong base = name;
  char separator = '_';
  long number = 0;
  if (digits < name.size() && digits > 0) {
    separator = name[digits - 1];
    // Read from the separator itself on purpose: after '_' or a letter this is 0.
    number = std::strtol(name.c_str() + digits - 1, nullptr, 10);
    base = name.substr(0, digits - 1);
  }

  LStringLong format =
      LUserSettings::Instance().Get(kLSettingsDomain, kSVSettingsSection, kSVSettingFileNameFormat,
                                    kSVSettingFileNameFormatDefault);
  ReplaceAll(format, "%", "%%");
  ReplaceAll(format, "%%autonumber%%", "%i");

  LStringLong candidate;
  if (format == base + separator + "%i") {
    for (int n = 0;; ++n) {
      candidate = FormatNumber(format, n);
      if (!HasFileWindowTitled(candidate.c_str())) break;
    }
  } else {
    for (long n = number + 1;; ++n) {
      candidate = base + separator + std::to_string(n) + (withoutExtension ? LStringLong() : extension);
      if (!HasFileWindowTitled(candidate.c_str())) break;
    }
  }
  out = candidate;
}

SVUndoMenuState SVWindowManager::UndoMenuUpdate() {
  SVUndoMenuState state = SVUndoMenuStateGet(current_ ? current_->File() : nullptr);
  frontEnd_.UndoMenuShow(state);
  return state;
}

void SVWindowManager::RegionsApply(bool full) { frontEnd_.RegionsShow(project_.Regions(), full); }
