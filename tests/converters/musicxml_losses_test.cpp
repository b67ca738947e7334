// Nothing of a MusicXML file is dropped without a word: every element that is taken out of a real file
// changes the score or the report.
#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "converters/musicxml_reader.h"
#include "converters/stvx.h"
#include "score_text.h"

namespace ts5::converters {
namespace {

using namespace test;

// What says how the file was made, what other elements say as well, and what stands within something that is
// told as a whole.
const std::set<std::string> kNoLoss = {
    "bottom-margin", "left-margin", "right-margin", "top-margin",    "line-width", "note-size",
    "credit-type",
    "group-symbol",  // the usual one
    "forward",       "syllabic",    "tie",          "tied",          "instrument", "midi-channel",
    "page-height",   "page-width",  "supports",     "encoding-date", "encoder",    "encoding-description",
    "accidental",  // the pitch has it; one that is not needed is kept
};

std::string Fingerprint(const pugi::xml_document& tree) {
  std::ostringstream out;
  tree.print(out, "", pugi::format_raw);
  const std::string text = out.str();
  const auto score = ReadMusicXml(ByteView(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
  if (!score) return "damaged";
  std::string all(AsText(WriteStvXml(score->document).value_or(Bytes())));
  for (const ScoreLoss& loss : score->losses.Rows()) all += score->losses.Line(loss) + "\n";
  return all;
}

void Collect(pugi::xml_node node, std::map<std::string, std::vector<pugi::xml_node>>& found) {
  for (const pugi::xml_node child : node.children()) {
    if (child.type() != pugi::node_element) continue;
    found[child.name()].push_back(child);
    Collect(child, found);
  }
}

// Takes something out for a while and sees whether it makes a difference.
bool Matters(pugi::xml_document& tree, pugi::xml_node node, const std::string& whole) {
  pugi::xml_node parent = node.parent();
  const pugi::xml_node stub = parent.insert_child_before(pugi::node_comment, node);
  // Moved away and back, so that it stays what it was.
  pugi::xml_node away = tree.append_child("away");
  away.append_move(node);
  pugi::xml_document rest;
  for (const pugi::xml_node child : tree.children()) {
    if (child != away) rest.append_copy(child);
  }
  const bool matters = Fingerprint(rest) != whole;
  parent.insert_move_after(node, stub);
  parent.remove_child(stub);
  tree.remove_child(away);
  return matters;
}

TEST(MusicXmlLosses, NothingIsDroppedWithoutAWord) {
  constexpr std::size_t kTried = 4;  // of one name in one file
  std::vector<std::pair<std::uintmax_t, std::filesystem::path>> files;
  for (const auto& entry : std::filesystem::directory_iterator(DataPath("musicxml")))
    if (entry.path().extension() != ".mxl") files.emplace_back(entry.file_size(), entry.path());
  std::ranges::sort(files);
  ASSERT_GE(files.size(), 14U);
  std::set<std::string> known;
  std::set<std::string> dropped;
  for (const auto& [size, path] : files) {
    pugi::xml_document tree;
    ASSERT_TRUE(tree.load_file(path.c_str())) << path;
    const std::string whole = Fingerprint(tree);
    std::map<std::string, std::vector<pugi::xml_node>> found;
    Collect(tree, found);
    for (const auto& [name, nodes] : found) {
      if (known.contains(name)) continue;
      bool matters = false;
      for (std::size_t i = 0; i < nodes.size() && i < kTried && !matters; ++i)
        matters = nodes[i].parent() == tree || Matters(tree, nodes[i], whole);
      if (matters) known.insert(name);
      if (!matters) dropped.insert(name);
    }
  }
  std::string silent;
  for (const std::string& name : dropped) {
    if (!known.contains(name) && !kNoLoss.contains(name)) silent += name + "\n";
  }
  EXPECT_EQ(silent, "");
  EXPECT_GT(known.size(), 90U);
}

}  // namespace
}  // namespace ts5::converters
