#pragma once
// LSoundTime: a signed count of milliseconds and its text forms.
//
// The parser is lenient on purpose (stray characters are skipped, the third
// colon acts as a decimal point); IsValid is the strict gate that user input
// passes first. Buffers handed to the text forms hold at least 32 bytes.

class LSoundTime {
public:
  LSoundTime() = default;
  explicit LSoundTime(long long milliseconds) : ms_(milliseconds) {}

  long long Get() const { return ms_; }
  void Set(long long milliseconds) { ms_ = milliseconds; }

  // H:MM:SS.t, rounded to the nearest tenth.
  void _GetTextHMMSSF(char* out) const;
  // H:MM:SS.hh, rounded to the nearest hundredth.
  void _GetTextHMMSSFF(char* out) const;
  // H:MM:SS.mmm, exact.
  void _GetTextHMMSSFFF(char* out) const;
  // As _GetTextHMMSSFFF with the hours as a 64-bit number.
  void _GetText(char* out) const;
  // As _GetTextHMMSSFF with the hours as a 64-bit number.
  void _GetText2(char* out) const;

  void SetText(const char* text);
  // The bool is accepted for callers that pass it and is not used.
  static bool IsValid(const char* text, bool allowNegative = false);

  friend bool operator==(LSoundTime a, LSoundTime b) { return a.ms_ == b.ms_; }

private:
  long long ms_ = 0;
};
