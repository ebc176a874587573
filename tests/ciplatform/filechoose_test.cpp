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

#include "ciom/filechoose.h"
#include "offscreen_fixture.h"

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
    holder.reset(ns().asyncwnd("owner", 800, 600, owner.get(), nullptr, true, -1, -1));
    ASSERT_NE(holder, nullptr);
    nsoff::runUntilIdle();
  }
  void TearDown() override {
    nsoff::setIdleHook(nullptr);
    holder.reset();
    owner.reset();
    chmod((dir + "/locked").c_str(), 0755);
    std::system(("rm -rf '" + dir + "'").c_str());
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
  static void typeIn(cEditChild& box, const std::string& text) {
    box.focus();
    nsoff::runUntilIdle();
    nsoff::type(text.c_str());
  }

  std::string dir;
  std::unique_ptr<cCustomForm> owner;
  std::unique_ptr<cWindowHolder> holder;
};

TEST_F(FileChoose, TheFilterShowsFoldersFirstThenMatchingFilesInNaturalOrder) {
  D dialog = openDialog();
  std::vector<std::string> shown, all, withHidden;
  const auto result = run(dialog, {[&] {
                                     shown = names(dialog.files());
                                     if (const char* shots = std::getenv("QVRACI_SHOTS"))
                                       nsoff::writeDesktopPng(
                                           (std::string(shots) + "/filechoose-open.png").c_str());
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

} // namespace
