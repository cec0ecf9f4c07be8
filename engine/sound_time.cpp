#include "engine/sound_time.h"

#include <cstdio>

namespace {

enum class Form { Tenths, Hundredths, Millis };

void Format(long long t, char* out, Form form, bool longHours) {
  if (t < 0) {
    *out++ = '-';
    t = -t;
  }
  long long rounding = form == Form::Tenths ? 50 : form == Form::Hundredths ? 5 : 0;
  long long v = t + rounding;
  long long hours = v / 3600000;
  int minutes = static_cast<int>((v / 60000) % 60);
  int seconds = static_cast<int>((v / 1000) % 60);
  int millis = static_cast<int>(v % 1000);
  int fraction = form == Form::Tenths ? millis / 100 : form == Form::Hundredths ? millis / 10 : millis;
  const char* pattern = form == Form::Tenths        ? "%d:%.2d:%.2d.%.1d"
                        : form == Form::Hundredths ? (longHours ? "%lld:%.2d:%.2d.%.2d" : "%d:%.2d:%.2d.%.2d")
                                                   : (longHours ? "%lld:%.2d:%.2d.%.3d" : "%d:%.2d:%.2d.%.3d");
  if (longHours) {
    std::snprintf(out, 31, pattern, hours, minutes, seconds, fraction);
  } else {
    std::snprintf(out, 31, pattern, static_cast<int>(hours), minutes, seconds, fraction);
  }
}

}  // namespace

void LSoundTime::_GetTextHMMSSF(char* out) const { Format(ms_, out, Form::Tenths, false); }
void LSoundTime::_GetTextHMMSSFF(char* out) const { Format(ms_, out, Form::Hundredths, false); }
void LSoundTime::_GetTextHMMSSFFF(char* out) const { Format(ms_, out, Form::Millis, false); }
void LSoundTime::_GetText(char* out) const { Format(ms_, out, Form::Millis, true); }
void LSoundTime::_GetText2(char* out) const { Format(ms_, out, Form::Hundredths, true); }

void LSoundTime::SetText(const char* text) {
  long long total = 0;
  long long field = 0;
  long long weight = 1000;
  int colons = 0;
  bool negative = false;
  for (const char* p = text; p && *p; ++p) {
    char c = *p;
    if (c >= '0' && c <= '9') {
      long long d = c - '0';
      if (weight == 1000) {
        // The field grows by a decimal place; the total by the same amount.
        long long grown = field * 10 + d * 1000;
        total += grown - field;
        field = grown;
      } else {
        total += d * weight;
        weight /= 10;
      }
    } else if (c == '.') {
      if (weight == 1000) weight = 100;
    } else if (c == ':') {
      ++colons;
      if (colons == 3) {
        // The third colon is read as a decimal point; deliberate and kept.
        weight = 100;
        field = 0;
      } else {
        total *= 60;
        field = 0;
        weight = 1000;
      }
    } else if (c == '-') {
      negative = true;
    }
  }
  ms_ = negative ? -total : total;
}

bool LSoundTime::IsValid(const char* text, bool) {
  if (!text || !*text) return false;
  int dots = 0;
  int colons = 0;
  for (const char* p = text; *p; ++p) {
    char c = *p;
    if (c >= '0' && c <= '9') continue;
    if (c == '.') {
      if (++dots > 1) return false;
    } else if (c == ':') {
      if (dots > 0 || ++colons > 3) return false;
    } else {
      return false;
    }
  }
  return true;
}
