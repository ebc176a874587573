// The editor's sample test: the definitions being edited, unsaved changes included, against
// a folder of sample files. Each sample is scanned alone on a background job, as
// `qvraci-rules identify` does: which definition recognises it and whether its end is
// exact. The window shows the rows as they come, under a progress bar, with Cancel; a click
// on a column's header sorts by it, and a double click (or Enter) on a row selects its
// definition in the main form's tree.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "ciom/customform.h"
#include "ciom/listview.h"
#include "ciom/progress.h"
#include "ciom/static.h"
#include "ciom/toolbar.h"
#include "scan/identify.h"

class cRuledMainForm;
class cSampleJob;

class cSampleTestForm : public cCustomForm {
public:
  enum eButton { kClose = kAcceptButton, kCancel = kCancelButton };
  enum eColumn { kSample = 0, kDefinition = 1, kVerdict = 2, kSize = 3 };
  static constexpr int kWidth = 760, kHeight = 480;

  // Tests the main form's definitions on the files in folder, modally over it. False when
  // the definitions could not be copied for the job (a message says so).
  static bool run(cRuledMainForm* main, const std::string& folder);

  // The window that run() shows, while it is open; for those who drive the editor.
  static cSampleTestForm* shown() { return myShown; }

  cSampleTestForm(cRuledMainForm* main, const std::string& folder);
  ~cSampleTestForm() override;

  // A copy of the definitions for the job: the user may edit the tree while it runs. False
  // when a rule cannot be copied.
  bool copyDefinitions();
  // Stops the job; the rows found so far stay.
  void cancel();
  bool running() const { return myRunning; }
  // Results in the order they came; rows refer to them by index.
  const std::vector<sIdentified>& results() const { return myResults; }
  // The main form's definition that a result's definition copies (null: none).
  const cScanSignature* original(const cScanSignature* copy) const;

  cListViewChild& rows() { return myRows; }
  cProgressChild& progress() { return myProgress; }
  cStaticChild& status() { return myStatus; }

  const char* wantLangResource() override { return "ruled::test"; }
  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onFormAccept() override;
  bool onFormCancel() override;
  bool onDialogButton(int id) override;
  bool onClose() override;
  bool onAction(cChildElement* source, cChildAction* action) override;

protected:
  // One sample, on the job's thread. A form that stands in for it must let the job go
  // (onClose) before it is destroyed itself.
  virtual sIdentified identifySample(cIdentifier& identifier, const std::string& path,
                                     const std::atomic<bool>& stop) {
    return identifier.identify(path, stop);
  }

private:
  friend class cSampleJob;
  void onListed(size_t total);
  void onResult(sIdentified result);
  void onFinished();
  void fillRows();
  void sortBy(int column);
  void selectDefinition(int row);
  std::string verdictText(const sIdentified& s);
  void showStatus();

  static inline cSampleTestForm* myShown = nullptr;
  cRuledMainForm* myMain;
  std::string myFolder;
  cCustomSignaturesTree myCopy; // what the job reads; the main form's tree stays the user's
  tNodeOrigins myOrigins;
  std::vector<sIdentified> myResults;
  size_t myTotal = 0;
  bool myListed = false, myRunning = false, myStopped = false;
  int mySort = kSample;
  bool myAscending = true;
  std::chrono::steady_clock::time_point myLastFill{};
  std::unique_ptr<cSampleJob> myJob;

  cStaticChild myStatus;
  cProgressChild myProgress;
  cListViewChild myRows;
};
