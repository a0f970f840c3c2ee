// form.h -- the texts and states of Window1's controls that the logic reads and writes.
#pragma once

#include <array>
#include <string>

namespace trelvane {

// Every setting of a comparison lives in a control; this is their plain,
// toolkit-neutral image. The window mirrors it into its widgets, the CLI and
// the tests drive it directly, and the handlers of the logic work on it.
// Defaults are those of a new window.
struct Form {
  // File tab
  std::string EFWS = "30";
  std::string EFAnaFrom = "1";
  std::string EFAnaTo = "max";
  bool display0 = false;
  bool Display1 = false;
  bool CBCPG = false;
  bool CBFile = false;
  bool CBClipboard = false;
  bool Comp0 = false, Reverse0 = false, CBRemoveN0 = false;
  bool Comp1 = false, Reverse1 = false, CBRemoveN1 = false;
  // The record or region read from each side's file, samtools' way
  // ("chr11", "chr11:5,225,464-5,229,395"); "" joins every record.
  std::string Region0, Region1;
  std::string Message = "Message";
  std::string EditField0 = "Drop a sequence file or output file";
  std::string EditField1 = "Drop a sequence file or output file";
  std::string GBLongCaption = "Longest sequence";
  std::string GBShortCaption = "Shortest sequence";
  bool GBShortVisible = true;
  std::string PBRUNCaption = "Run";
  bool PBRUNEnabled = false;
  bool PBRUNVisible = true;
  bool ProgressBar1Visible = true;
  int ProgressBar1Value = 0;
  int ProgressBar1Maximum = 100;
  bool TabPanel1Enabled = true;
  int TabPanel1Value = 0;  // 0 File, 1 Model, 2 Results, 3 Graphic, 4 Pref

  // Model tab
  std::string SeqModel1;
  std::string SeqModel2;
  int PupModelListIndex = 0;  // 0 Identity, 1 TS/TV, 2 General model
  bool PupModelEnabled = false;
  std::string messModel;
  // The sixteen cells, row r (A, T, C, G) then column c: cells[4 * r + c].
  std::array<std::string, 16> cells = {"1", "0", "0", "0", "0", "1", "0", "0",
                                       "0", "0", "1", "0", "0", "0", "0", "1"};
  std::array<std::string, 4> Somme = {"1", "1", "1", "1"};

  // Results tab
  std::string Results;

  // Graphic tab
  std::string EFFrom = "0";
  std::string EFTo = "max";
  std::string ST_messGraph;
  bool PBDotEnabled = false;
  int Canvas1Width = 352;
  int Canvas1Height = 250;
  // The X labels in the longest sequence's record coordinates: each
  // labelled position as its record numbers the base there ("-" where it
  // holds none), instead of the run's 0-based offset.
  bool AxisInRecord = false;

  // Pref tab
  std::string EFHeight = "450";
  std::string EFwidth = "400";
  bool CBMovingShort = false;
  std::string EFIdentities = "20";
  std::string EFSD = "100";
  bool CBMaxIdent = true;
  bool CBUsePoint = true, CBUsePoint1 = false;
  bool CBSymetrie = false, CBSymetrieEnabled = false;
  bool CBHOSD = true, RadioButton1 = false;
  bool CBFreqIB = true, CBFreqIB1 = false;
  bool CBMaxMin = true;
  std::string EF_MinX = "0";
  std::string EF_MaxX = "1";
  // Conserved segments shaded under the profile, and the rule that calls
  // them there and in File > Export: a fraction of the window or mean,
  // mean+Ksd, max of the random expectation, over so many positions.
  bool CBShadeSegments = false;
  std::string EFSegThreshold = "0.70";
  std::string EFSegLength = "100";

  // Window
  int Width = 400;
  int Height = 450;
};

}  // namespace trelvane
