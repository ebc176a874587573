#include "uisamples.h"

#include <algorithm>
#include <chrono>

#include "base/job.h"
#include "ciom/langfile.h"
#include "ciom/messageform.h"
#include "ciom/theme.h"
#include "ui.h"

namespace {

// Texts of "ruled::test".
enum eText {
  txTitle = 0,
  txSample = 1,
  txDefinitionColumn = 2,
  txVerdict = 3,
  txSize = 4,
  txCancel = 5,
  txClose = 6,
  txLooking = 7,
  txTesting = 8,
  txDone = 9,
  txStopped = 10,
  txExact = 11, // 11..17 in the order of eVerdict
  txNoSamples = 18,
  txCannotCopy = 19,
  txNone = 20,
  txShortByOne = 21, // the singular forms of 12, 13 and 9
  txLongByOne = 22,
  txDoneOne = 23,
};

constexpr int kMargin = 8, kStatusHeight = 18;
constexpr int kListed = 1001, kResult = 1002, kFinished = 1003; // the job's posted actions
constexpr int kJobWaitMs = 5000; // a stopped job ends within one sample's block or walk
constexpr auto kRefill = std::chrono::milliseconds(250); // the rows shown while results come

class cListedAction : public cChildAction {
public:
  explicit cListedAction(size_t total) : cChildAction(kListed), total(total) {}
  size_t total;
};

class cResultAction : public cChildAction {
public:
  explicit cResultAction(sIdentified result) : cChildAction(kResult), result(std::move(result)) {}
  sIdentified result;
};

} // namespace

// Gathers the samples and identifies them one by one against the copy of the definitions,
// posting each result to the form; the form's GUI thread does everything else.
class cSampleJob final : public cJob {
public:
  cSampleJob(cSampleTestForm& form, const cCustomSignaturesTree& tree, std::string folder)
      : myForm(form), myTree(tree), myFolder(std::move(folder)) {}
  ~cSampleJob() override {
    cancel();
    terminate(kJobWaitMs);
  }
  void cancel() {
    myCancel = true;
    stop();
  }

protected:
  int onJobRun() override {
    std::vector<std::string> errors;
    const std::vector<std::string> samples = gatherSamples({myFolder}, errors);
    myForm.postAction(new cListedAction(samples.size()));
    cIdentifier identifier(myTree, 512, sScanOptions{}.maxSize);
    for (const std::string& path : samples) {
      if (myCancel) break;
      sIdentified result = myForm.identifySample(identifier, path, myCancel);
      if (result.verdict == eVerdict::stopped) break;
      myForm.postAction(new cResultAction(std::move(result)));
    }
    myForm.postAction(new cChildAction(kFinished));
    return 0;
  }

private:
  cSampleTestForm& myForm;
  const cCustomSignaturesTree& myTree;
  std::string myFolder;
  std::atomic<bool> myCancel{false};
};

bool cSampleTestForm::run(cRuledMainForm* main, const std::string& folder) {
  if (!main) return false;
  cSampleTestForm form(main, folder);
  const cCiomLangData* section = main->requestNamedLangResource(form.wantLangResource());
  if (!form.copyDefinitions()) {
    cMessageForm::errorbox(main, section ? section->string(txCannotCopy) : "", nullptr);
    return false;
  }
  const char* title = section ? section->string(txTitle) : nullptr;
  myShown = &form;
  form.modal(title ? title : "", kWidth, kHeight, main, true);
  myShown = nullptr;
  return true;
}

cSampleTestForm::cSampleTestForm(cRuledMainForm* main, const std::string& folder)
    : myMain(main), myFolder(folder) {}

cSampleTestForm::~cSampleTestForm() {
  myJob.reset(); // before the copy it reads and the form it posts to
}

bool cSampleTestForm::copyDefinitions() {
  return myMain->document().tree().copyTo(myCopy, myOrigins);
}

const cScanSignature* cSampleTestForm::original(const cScanSignature* copy) const {
  const auto at = myOrigins.find(copy);
  return at == myOrigins.end() ? nullptr : at->second;
}

// --- building ----------------------------------------------------------------------------

void cSampleTestForm::onConstruct() {
  cCustomForm::onConstruct();
  cPanelChild* panel = clientArea();
  myStatus.setTransparent(true);
  panel->anchor(&myStatus, kMargin, kMargin, ~kMargin, kStatusHeight);
  const int progressY = kMargin + kStatusHeight + 4;
  panel->anchor(&myProgress, kMargin, progressY, ~kMargin, cProgressChild::kHeight);
  myProgress.setBusy(true); // until the samples are counted
  const int listY = progressY + cProgressChild::kHeight + kMargin;
  myRows.setColumns({{string(txSample), 330, false},
                     {string(txDefinitionColumn), 230, false},
                     {string(txVerdict), 110, false},
                     {string(txSize), 70, true}});
  myRows.setSortMark(kSample, true);
  myRows.fitColumns(kDefinition); // the spare width for the definitions' paths
  panel->anchor(&myRows, kMargin, listY, ~kMargin, ~kMargin);

  addDialogButtons(string(txClose), string(txCancel));
  showStatus();
}

bool cSampleTestForm::onAfterConstruct() {
  myJob = std::make_unique<cSampleJob>(*this, myCopy, myFolder);
  myRunning = myJob->start();
  if (!myRunning) onFinished();
  myRows.focus();
  return true;
}

// --- the job's news ----------------------------------------------------------------------

void cSampleTestForm::onListed(size_t total) {
  myTotal = total;
  myListed = true;
  myProgress.setBusy(false);
  myProgress.setProgress(0, static_cast<long long>(std::max<size_t>(total, 1)));
  showStatus();
}

void cSampleTestForm::onResult(sIdentified result) {
  myResults.push_back(std::move(result));
  myProgress.setProgress(static_cast<long long>(myResults.size()),
                         static_cast<long long>(std::max<size_t>(myTotal, 1)));
  // Many small samples come faster than a list can be rebuilt: the rows follow now and then.
  const auto now = std::chrono::steady_clock::now();
  if (now - myLastFill >= kRefill) {
    myLastFill = now;
    fillRows();
    showStatus();
  }
}

void cSampleTestForm::onFinished() {
  myRunning = false;
  myProgress.setBusy(false);
  if (!myStopped) myProgress.setProgress(1, 1);
  // A disabled Cancel keeps no focus: the rows take it, and Escape still closes.
  cButtonChild* cancelButton = dialogButton(kCancel);
  const bool refocus = cancelButton && cancelButton->focused();
  dialogButtons().enableButton(kCancel, false);
  if (refocus) myRows.focus();
  fillRows();
  showStatus();
}

void cSampleTestForm::cancel() {
  if (!myRunning || !myJob) return;
  myStopped = true;
  myJob->cancel();
  showStatus();
}

// --- the rows ----------------------------------------------------------------------------

std::string cSampleTestForm::verdictText(const sIdentified& s) {
  int text = txExact + static_cast<int>(s.verdict);
  if (s.by == 1 && s.verdict == eVerdict::shortBy) text = txShortByOne;
  if (s.by == 1 && s.verdict == eVerdict::longBy) text = txLongByOne;
  return cRuledMainForm::format(string(text), {std::to_string(s.by)});
}

void cSampleTestForm::fillRows() {
  std::vector<size_t> order(myResults.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  const auto less = [this](size_t a, size_t b) {
    const sIdentified &x = myResults[a], &y = myResults[b];
    switch (mySort) {
    case kDefinition:
      return (x.file.definition ? definitionPath(x.file.definition) : "") <
             (y.file.definition ? definitionPath(y.file.definition) : "");
    case kVerdict:
      return std::make_pair(x.verdict, x.by) < std::make_pair(y.verdict, y.by);
    case kSize:
      return x.size < y.size;
    default:
      return x.path < y.path;
    }
  };
  std::stable_sort(order.begin(), order.end(),
                   [&](size_t a, size_t b) { return myAscending ? less(a, b) : less(b, a); });
  const size_t prefix = myFolder.size() + (myFolder.empty() || myFolder.back() == '/' ? 0 : 1);
  const int keep =
      myRows.selected() >= 0 ? static_cast<int>(myRows.row(myRows.selected()).tag) : -1;
  std::vector<cListViewChild::sRow> rows;
  int selected = -1;
  for (size_t i : order) {
    const sIdentified& s = myResults[i];
    const std::string shown = s.path.rfind(myFolder, 0) == 0 ? s.path.substr(prefix) : s.path;
    const std::string definition =
        s.file.definition ? definitionPath(s.file.definition) : string(txNone);
    if (static_cast<int>(i) == keep) selected = static_cast<int>(rows.size());
    rows.push_back({{shown, definition, verdictText(s), std::to_string(s.size)},
                    -1,
                    static_cast<long long>(i)});
  }
  myRows.setRows(std::move(rows));
  if (selected >= 0) myRows.select(selected, false);
}

void cSampleTestForm::sortBy(int column) {
  myAscending = column == mySort ? !myAscending : true;
  mySort = column;
  myRows.setSortMark(column, myAscending);
  fillRows();
}

void cSampleTestForm::selectDefinition(int row) {
  if (row < 0 || row >= myRows.count()) return;
  const sIdentified& s = myResults[static_cast<size_t>(myRows.row(row).tag)];
  if (const cScanSignature* sig = s.file.definition ? original(s.file.definition) : nullptr)
    myMain->showDefinition(sig);
}

void cSampleTestForm::showStatus() {
  std::string text;
  if (!myListed) {
    text = cRuledMainForm::format(string(txLooking), {myFolder});
  } else if (myTotal == 0) {
    text = string(txNoSamples);
  } else if (myRunning && !myStopped) {
    text = cRuledMainForm::format(string(txTesting),
                                  {std::to_string(myResults.size()), std::to_string(myTotal)});
  } else {
    size_t exact = 0, unrecognised = 0;
    for (const sIdentified& s : myResults) {
      exact += s.verdict == eVerdict::exact;
      unrecognised += s.verdict == eVerdict::unrecognised;
    }
    const std::string counts = cRuledMainForm::format(
        string(myResults.size() == 1 ? txDoneOne : txDone),
        {std::to_string(myResults.size()), std::to_string(exact),
         std::to_string(myResults.size() - exact - unrecognised), std::to_string(unrecognised)});
    text = myStopped ? cRuledMainForm::format(string(txStopped), {std::to_string(myResults.size()),
                                                                  std::to_string(myTotal)}) +
                           " " + counts
                     : counts;
  }
  myStatus.setText(text.c_str(), -1, true);
}

// --- events ------------------------------------------------------------------------------

bool cSampleTestForm::onFormAccept() {
  // Enter on a row shows its definition; elsewhere it closes the window once the test ends.
  if (myRows.hasFocus() && myRows.selected() >= 0) {
    selectDefinition(myRows.selected());
  } else if (!myRunning) {
    end_modal(0);
  }
  return true;
}

bool cSampleTestForm::onFormCancel() {
  // Escape stops a test that runs, and closes the window once it has stopped.
  if (myRunning) {
    cancel();
    return true;
  }
  end_modal(0);
  return true;
}

bool cSampleTestForm::onDialogButton(int id) {
  // Cancel stops the test and keeps the window; Close ends both.
  if (id == kCancel) {
    cancel();
  } else if (id == kClose) {
    myJob.reset();
    end_modal(0);
  }
  return true;
}

bool cSampleTestForm::onClose() {
  myJob.reset(); // waits for the job, which stops at once
  return true;
}

bool cSampleTestForm::onAction(cChildElement* source, cChildAction* action) {
  const int code = action ? action->code : -1;
  if (source == this && code == kListed) {
    onListed(static_cast<cListedAction*>(action)->total);
    return true;
  }
  if (source == this && code == kResult) {
    onResult(std::move(static_cast<cResultAction*>(action)->result));
    return true;
  }
  if (source == this && code == kFinished) {
    onFinished();
    return true;
  }
  if (source == &myRows && code == cListViewChild::kHeaderClick) {
    sortBy(static_cast<cListViewChild::cListAction*>(action)->index);
    return true;
  }
  if (source == &myRows && code == cListViewChild::kActivated) {
    selectDefinition(static_cast<cListViewChild::cListAction*>(action)->index);
    return true;
  }
  return cCustomForm::onAction(source, action);
}
