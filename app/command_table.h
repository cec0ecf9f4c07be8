#pragma once
// The editor's commands as data: what menus, toolbars, shortcuts, help texts
// and the command language are built from. A row names a command by its number,
// its word in the command language, its German label (the menu entry and the
// undo description), what it acts on, what it needs before it can run, and the
// arguments and options it takes.
#include <cstdint>
#include <span>
#include <string>

// Command numbers are stored with menus, toolbars and shortcuts: they persist
// and must never be renumbered or reused.
enum SVCommandId : int {
  kSVCmdOpen = 9101,
  kSVCmdNew = 9102,
  kSVCmdDocs = 9103,
  kSVCmdDoc = 9104,
  kSVCmdClose = 9105,
  kSVCmdSave = 9106,
  kSVCmdSaveAs = 9107,
  kSVCmdProjectSave = 9108,
  kSVCmdProjectOpen = 9109,
  kSVCmdSelect = 9201,
  kSVCmdSelectAll = 9202,
  kSVCmdSelectNone = 9203,
  kSVCmdBand = 9204,
  kSVCmdBandOff = 9205,
  kSVCmdCursor = 9206,
  kSVCmdCopy = 9301,
  kSVCmdCut = 9302,
  kSVCmdPaste = 9303,
  kSVCmdDelete = 9304,
  kSVCmdTrim = 9305,
  kSVCmdSilence = 9306,
  kSVCmdRepeat = 9307,
  kSVCmdGenerateTone = 9308,
  kSVCmdGenerateNoise = 9309,
  kSVCmdGenerateSilence = 9310,
  kSVCmdInsertFile = 9311,
  kSVCmdUndo = 9401,
  kSVCmdRedo = 9402,
  kSVCmdRevert = 9403,
  kSVCmdHistory = 9404,
  kSVCmdReverse = 9501,
  kSVCmdAmplify = 9502,
  kSVCmdNormalize = 9503,
  kSVCmdFadeIn = 9504,
  kSVCmdFadeOut = 9505,
  kSVCmdDcOffset = 9506,
  kSVCmdAutoTrim = 9507,
  kSVCmdSwap = 9508,
  kSVCmdInvert = 9509,
  kSVCmdJoin = 9510,
  kSVCmdPan = 9511,
  kSVCmdEffect = 9512,
  kSVCmdChain = 9513,
  kSVCmdChainSave = 9514,
  kSVCmdChannels = 9515,
  kSVCmdEffectList = 9516,
  kSVCmdAutoGain = 9517,
  kSVCmdMp3Gain = 9518,
  kSVCmdReduceVocals = 9519,
  kSVCmdCBRadio = 9520,
  kSVCmdTempo = 9521,
  kSVCmdPitch = 9522,
  kSVCmdSpeed = 9523,
  kSVCmdVoicePitch = 9524,
  kSVCmdPSProfile = 9525,
  kSVCmdClickPop = 9531,
  kSVCmdRepair = 9532,
  kSVCmdNoiseProfile = 9533,
  kSVCmdNoiseReduce = 9534,
  kSVCmdBookmarkAdd = 9601,
  kSVCmdBookmarkDelete = 9602,
  kSVCmdBookmarks = 9603,
  kSVCmdRegionAdd = 9604,
  kSVCmdRegions = 9605,
  kSVCmdTags = 9606,
  kSVCmdTag = 9607,
  kSVCmdStatus = 9701,
  kSVCmdHelp = 9702,
  kSVCmdQuit = 9703,
  kSVCmdLoudness = 9704,
  kSVCmdPlay = 9801,
  kSVCmdStop = 9802,
  kSVCmdRecord = 9803,
};

// What a command acts on.
enum class SVCommandActs : std::uint8_t {
  kNothing,    // the session, or the document list
  kSelection,  // the selection; the whole document when nothing is selected
  kDocument,   // the whole document
  kCursor,     // the cursor position
};

// What a command needs before it can run (flags).
enum SVCommandNeeds : unsigned {
  kSVNeedNothing = 0,
  kSVNeedDocument = 1,
  kSVNeedSelection = 2,  // a non-empty selection
  kSVNeedStereo = 4,     // a document of two channels
};

enum class SVArgKind : std::uint8_t {
  kNone,
  kTime,    // a time, handed over in frames at the current document's rate
  kNumber,  // a decimal number (a comma counts as the point)
  kText,    // one word
  kTexts,   // every remaining word
};

struct SVArgSpec {
  SVArgKind kind = SVArgKind::kNone;
  const char* name = nullptr;  // as the help shows it, e.g. "ANFANG"
  bool optional = false;
};

struct SVCommandInfo {
  int id;
  // The command language's words; alternatives separated by '|', the first shown in help.
  const char* word;
  const char* label;
  const char* group;  // the help's heading
  SVCommandActs acts;
  unsigned needs;
  SVArgSpec args[4];
  // Options as "--to FORMAT --quality Q --dither": an upper-case word after an option is its value.
  const char* options = "";
};

[[nodiscard]] std::span<const SVCommandInfo> SVCommandTable();
// The row of a command number; nullptr for numbers that are not commands.
[[nodiscard]] const SVCommandInfo* SVCommandFind(int id);
// How a command is called, e.g. "select ANFANG ENDE" or "new [RATE] [KANÄLE]".
[[nodiscard]] std::string SVCommandUsage(const SVCommandInfo& info);
// The command language's help: every command's usage under its group's heading.
[[nodiscard]] std::string SVCommandHelpText();
