// The file choice dialog over a folder tree made by the test, run modally on the offscreen
// backend and driven by a script of keys and clicks.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "../common/offscreen_fixture.h"
#include "ciom/filechoose.h"
#include "ciom/newfolder.h"

namespace {

using D = cFileChooseDialog;
constexpr int kEnter = cChildElement::kKeyEnter, kEscape = cChildElement::kKeyEscape;

void touch(const std::string& path, size_t bytes = 0) {
  std::ofstream(path) << std::string(bytes, 'x');
}

class FileChoose : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    if (const char* h = std::getenv("HOME")) home = h;
    char pattern[] = "/tmp/qvraci-fc-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir = pattern;
    mkdir((dir + "/sub").c_str(), 0755);
    mkdir((dir + "/locked").c_str(), 0000);
    touch(dir + "/a.qrrs", 5);
    touch(dir + "/B.QRRS", 2500);
    touch(dir + "/file10.qrrs", 1);
    touch(dir + "/file9.qrrs", 3);
    touch(dir + "/notes.txt");
    touch(dir + "/.hidden.qrrs");
    touch(dir + "/\xff\xfe.qrrs"); // not UTF-8
    touch(dir + "/sub/inner.qrrs");
    owner = std::make_unique<cCustomForm>();
    holder = open(owner.get(), 800, 600, -1, -1);
  }
  void TearDown() override {
    nsoff::setIdleHook(nullptr);
    holder.reset();
    owner.reset();
    chmod((dir + "/locked").c_str(), 0755);
    std::system(("rm -rf '" + dir + "'").c_str());
    home ? setenv("HOME", home->c_str(), 1) : unsetenv("HOME");
    cOffscreenTest::TearDown();
  }
  // The rows' first cells, as shown.
  static std::vector<std::string> names(cListViewChild& list) {
    std::vector<std::string> out;
    for (int i = 0; i < list.count(); ++i) out.push_back(list.row(i).cells[0]);
    return out;
  }
  std::optional<std::string> run(D& dialog, std::vector<std::function<void()>> steps) {
    cScript script(std::move(steps));
    return dialog.run(owner.get(), nullptr);
  }
  D openDialog() { return D(D::fmOpen, {{"Rules", "qrrs", "*.qrrs"}}, dir.c_str(), nullptr); }
  // With QVRACI_SHOTS set, a picture of the desktop into that folder.
  static void shot(const char* name) {
    if (const char* shots = std::getenv("QVRACI_SHOTS"))
      nsoff::writeDesktopPng((std::string(shots) + "/filechoose-" + name + ".png").c_str());
  }
  static void typeIn(cEditChild& box, const std::string& text) {
    box.focus();
    nsoff::runUntilIdle();
    nsoff::type(text.c_str());
  }

  std::string dir;
  std::optional<std::string> home;
  std::unique_ptr<cCustomForm> owner;
  std::unique_ptr<cWindowHolder> holder;
};

TEST_F(FileChoose, TheFilterShowsFoldersFirstThenMatchingFilesInNaturalOrder) {
  D dialog = openDialog();
  std::vector<std::string> shown, all, withHidden;
  const auto result = run(dialog, {[&] {
                                     shown = names(dialog.files());
                                     shot("open");
                                     dialog.types().focus();
                                   },
                                   [] { nsoff::key(cChildElement::kKeyDown); }, // all files
                                   [&] {
                                     all = names(dialog.files());
                                     nsoff::key('H', {false, true, false, false});
                                   },
                                   [&] {
                                     withHidden = names(dialog.files());
                                     nsoff::key(kEscape);
                                   }});
  EXPECT_FALSE(result);
  EXPECT_EQ(shown, (std::vector<std::string>{"locked", "sub", "a.qrrs", "B.QRRS", "file9.qrrs",
                                             "file10.qrrs", "\xef\xbf\xbd\xef\xbf\xbd.qrrs"}));
  EXPECT_EQ(all.size(), shown.size() + 1); // notes.txt
  EXPECT_EQ(withHidden.size(), all.size() + 1);
  EXPECT_EQ(withHidden[2], ".hidden.qrrs");
}

TEST_F(FileChoose, TypedNamesAndPathsAreOpenedOrChosen) {
  setenv("HOME", dir.c_str(), 1); // "~/..." below is the test's folder
  struct sCase {
    std::string typed, chosen;
  };
  const sCase cases[] = {{"a.qrrs", dir + "/a.qrrs"},
                         {dir + "/sub/inner.qrrs", dir + "/sub/inner.qrrs"},
                         {"~/sub/../file9.qrrs", dir + "/file9.qrrs"},
                         {"sub/inner.qrrs", dir + "/sub/inner.qrrs"}};
  for (const sCase& c : cases) {
    SCOPED_TRACE(c.typed);
    D dialog = openDialog();
    const auto result = run(dialog, {[&] {
                              typeIn(dialog.nameBox(), c.typed);
                              nsoff::key(kEnter);
                            }});
    EXPECT_EQ(result.value_or("none"), c.chosen);
  }
  // A folder typed is opened, and a file in it then chosen from the list with the keys.
  D dialog = openDialog();
  std::string folderShown;
  const auto result =
      run(dialog, {[&] {
                     typeIn(dialog.nameBox(), "sub");
                     nsoff::key(kEnter);
                   },
                   [&] {
                     folderShown = dialog.folder();
                     dialog.files().focus();
                   },
                   [] { nsoff::key(cChildElement::kKeyDown); }, [] { nsoff::key(kEnter); }});
  EXPECT_EQ(folderShown, dir + "/sub");
  EXPECT_EQ(result.value_or("none"), dir + "/sub/inner.qrrs");
}

TEST_F(FileChoose, TheNameBoxCompletesFollowsSlashesAndFilters) {
  D dialog = openDialog();
  const sNSModifiers alt{false, false, true, false};
  std::vector<std::string> folders, texts;
  std::vector<std::string> filtered;
  const auto note = [&] {
    folders.push_back(dialog.folder());
    texts.push_back(dialog.nameBox().text());
  };
  const auto result =
      run(dialog, {[&] {
                     typeIn(dialog.nameBox(), "su");
                     nsoff::key(cChildElement::kKeyTab); // "sub/", which opens at once
                   },
                   [&] {
                     note();
                     nsoff::key(cChildElement::kKeyLeft, alt);
                   },
                   [&] {
                     note();
                     nsoff::key(cChildElement::kKeyRight, alt);
                   },
                   [&] {
                     note();
                     nsoff::key(cChildElement::kKeyLeft, alt);
                   },
                   [&] {
                     nsoff::type("FI");
                     nsoff::key(cChildElement::kKeyTab); // file9 and file10 share "file"
                   },
                   [&] {
                     note();
                     nsoff::type("1");
                     nsoff::key(cChildElement::kKeyTab);
                   },
                   [&] {
                     note();
                     dialog.nameBox().setText("");
                     nsoff::type("sub/"); // typed, not completed
                   },
                   [&] {
                     note();
                     nsoff::type("../*.txt");
                     nsoff::key(kEnter);
                   },
                   [&] {
                     note();
                     filtered = names(dialog.files());
                     nsoff::key(kEscape);
                   }});
  EXPECT_FALSE(result);
  EXPECT_EQ(folders, (std::vector<std::string>{dir + "/sub", dir, dir + "/sub", dir, dir,
                                               dir + "/sub", dir}));
  EXPECT_EQ(texts, (std::vector<std::string>{"", "", "", "file", "file10.qrrs", "", "*.txt"}));
  EXPECT_EQ(filtered, (std::vector<std::string>{"locked", "sub", "notes.txt"}));
}

TEST_F(FileChoose, AFolderThatGoesAwayOrLinksToItselfStopsNothing) {
  ASSERT_EQ(symlink("loop", (dir + "/loop").c_str()), 0);
  ASSERT_EQ(symlink(".", (dir + "/here").c_str()), 0);
  D dialog = openDialog();
  std::vector<std::string> shown;
  std::string message, after;
  const auto result = run(dialog, {[&] {
                                     shown = names(dialog.files());
                                     dialog.go(dir + "/here/here/sub");
                                   },
                                   [&] {
                                     std::system(("rm -rf '" + dir + "/sub'").c_str());
                                     nsoff::key(450); // F5
                                   },
                                   [&] {
                                     message = nsoff::topWindow().caption;
                                     nsoff::key(kEnter);
                                   },
                                   [&] {
                                     after = dialog.folder();
                                     nsoff::key(kEscape);
                                   }});
  EXPECT_FALSE(result);
  EXPECT_EQ(shown.size(), 8u); // "here" joins the folders; the loop is no folder
  EXPECT_EQ(message, "Error");
  EXPECT_EQ(after, dir + "/here/here");
}

TEST_F(FileChoose, SavingAddsTheExtensionAndAsksBeforeReplacing) {
  const auto save = [&](const std::string& typed, std::vector<std::function<void()>> answer) {
    D dialog(D::fmSave, {{"Rules", "qrrs", "*.qrrs"}}, dir.c_str(), nullptr);
    std::vector<std::function<void()>> steps = {[&, typed] {
      if (!typed.empty()) typeIn(dialog.nameBox(), typed);
      nsoff::key(kEnter);
    }};
    steps.insert(steps.end(), answer.begin(), answer.end());
    return run(dialog, steps);
  };
  std::string asked;
  const auto caption = [&] { asked = nsoff::topWindow().caption; };
  EXPECT_EQ(save("new", {}).value_or("none"), dir + "/new.qrrs");
  EXPECT_EQ(save("a", {caption, [] { nsoff::key(kEnter); }}).value_or("none"), dir + "/a.qrrs");
  EXPECT_EQ(asked, "Confirm");
  // No to replacing keeps the dialog open; Escape then cancels it. So does an empty name,
  // after a warning.
  EXPECT_FALSE(save("a", {[] { nsoff::key(kEscape); }, [] { nsoff::key(kEscape); }}));
  asked.clear();
  EXPECT_FALSE(save("", {caption, [] { nsoff::key(kEnter); }, [] { nsoff::key(kEscape); }}));
  EXPECT_EQ(asked, "Warning");
}

TEST_F(FileChoose, FoldersThatCannotBeOpenedSayIt) {
  D dialog = openDialog();
  std::vector<std::string> messages;
  std::vector<std::string> folders;
  std::vector<std::function<void()>> steps;
  std::vector<std::string> targets = {dir + "/gone"};
  if (geteuid() != 0) targets.push_back(dir + "/locked"); // root reads it anyway
  for (const std::string& target : targets) {
    steps.push_back([&, target] { dialog.go(target); });
    steps.push_back([&] {
      messages.push_back(nsoff::topWindow().caption);
      nsoff::key(kEnter);
    });
    steps.push_back([&] { folders.push_back(dialog.folder()); });
  }
  steps.push_back([] { nsoff::key(kEscape); });
  EXPECT_FALSE(run(dialog, steps));
  EXPECT_EQ(messages, std::vector<std::string>(targets.size(), "Error"));
  EXPECT_EQ(folders, std::vector<std::string>(targets.size(), dir));
}

TEST_F(FileChoose, HeadersSortAndUpSelectsTheFolderLeft) {
  D dialog = openDialog();
  std::vector<std::string> bySize, bySizeDown, afterUp;
  int selectedAfterUp = -1;
  const auto header = [&](int column) {
    sPoint at;
    dialog.files().absPos(at);
    int x = at.x + 1 - dialog.files().scrollOffset().x;
    for (int c = 0; c < column; ++c) x += dialog.files().columns()[static_cast<size_t>(c)].width;
    nsoff::click(x + 20, at.y + 10);
  };
  const auto result = run(dialog, {[&] { header(1); },
                                   [&] {
                                     bySize = names(dialog.files());
                                     header(1);
                                   },
                                   [&] {
                                     bySizeDown = names(dialog.files());
                                     dialog.go(dir + "/sub");
                                   },
                                   [] {
                                     nsoff::key(cChildElement::kKeyUp, {false, false, true, false});
                                   },
                                   [&] {
                                     afterUp = {dialog.folder()};
                                     selectedAfterUp = dialog.files().selected();
                                     nsoff::key(kEscape);
                                   }});
  EXPECT_FALSE(result);
  const std::vector<std::string> ascending = {
      "locked", "sub",   "\xef\xbf\xbd\xef\xbf\xbd.qrrs", "file10.qrrs", "file9.qrrs",
      "a.qrrs", "B.QRRS"};
  EXPECT_EQ(bySize, ascending);
  // Descending keeps the folders first.
  EXPECT_EQ(bySizeDown, (std::vector<std::string>{"sub", "locked", "B.QRRS", "a.qrrs", "file9.qrrs",
                                                  "file10.qrrs", "\xef\xbf\xbd\xef\xbf\xbd.qrrs"}));
  EXPECT_EQ(afterUp, std::vector<std::string>{dir});
  ASSERT_GE(selectedAfterUp, 0);
  EXPECT_EQ(dialog.files().row(selectedAfterUp).cells[0], "sub");
}

TEST_F(FileChoose, ANameThatIsNotUtf8IsChosenByItsBytes) {
  D dialog = openDialog();
  const auto result = run(dialog, {[&] {
                                     dialog.files().focus();
                                     dialog.files().select(dialog.files().count() - 1, true);
                                   },
                                   [] { nsoff::key(kEnter); }});
  EXPECT_EQ(result.value_or("none"), dir + "/\xff\xfe.qrrs");
}

TEST_F(FileChoose, NewFolderAsksForANameAndSaysWhenItCannotMakeIt) {
  _guardchar<char> text;
  EXPECT_FALSE(cNewFolderNameReqForm::reqNewFolderName(nullptr, text, nullptr));

  D dialog = openDialog();
  std::vector<std::string> seen; // captions of the windows on top, in turn
  const auto press = [&] {
    const sPoint at = centreOf(dialog.tools().button(D::kNewFolder));
    nsoff::click(at.x, at.y);
  };
  const auto top = [&] { seen.push_back(nsoff::topWindow().caption); };
  const auto result = run(dialog, {press,
                                   [&] {
                                     top();
                                     nsoff::key(kEnter); // empty: the form stays
                                   },
                                   [&] {
                                     top();
                                     nsoff::type("made");
                                     shot("newfolder");
                                     nsoff::key(kEnter);
                                   },
                                   press,
                                   [] {
                                     nsoff::type("sub"); // taken
                                     nsoff::key(kEnter);
                                   },
                                   [&] {
                                     top();
                                     nsoff::key(kEnter);
                                   },
                                   [] { nsoff::key(kEscape); }});
  EXPECT_FALSE(result);
  EXPECT_EQ(seen, (std::vector<std::string>{"New folder", "New folder", "Error"}));
  struct stat st {};
  EXPECT_EQ(stat((dir + "/made").c_str(), &st), 0);
  EXPECT_TRUE(S_ISDIR(st.st_mode));
}

} // namespace
