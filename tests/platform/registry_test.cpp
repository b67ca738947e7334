#include "platform/store/registry.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <thread>

#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/registry_blob.h"
#include "platform/store/registry_salvage.h"
#include "support/child.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::Content;
using test::FailsWith;
using test::IsOk;
using test::Listing;
using test::TemporaryDirectory;
using Names = std::vector<std::string>;

constexpr const char* kKey = "HKEY_LOCAL_MACHINE\\software\\qlw\\Stavora-dialog\\5.0";

Registry InMemory() {
  return std::move(*Registry::Open(kRegistryInMemory));
}

RegistryValues Some(std::string_view title) {
  RegistryValues values;
  values.SetText("Title", title);
  values.SetText("", "der Standardwert");
  values.SetBinary("Melodie", Bytes{0, 255, 0, 1});
  return values;
}

struct RegistryTest : testing::Test {
  const TemporaryDirectory directory;
};

TEST_F(RegistryTest, KeysAreFoundWithoutRegardToCaseAndKeepTheirSpelling) {
  Registry registry = InMemory();
  ASSERT_THAT(registry.Write("HKLM\\Software\\Qlw\\Übung", Some("a")), IsOk());
  EXPECT_EQ(*registry.Read("\\hkey_local_machine\\SOFTWARE\\\\qlw\\ÜBUNG\\"), Some("a"));
  EXPECT_THAT(registry.Write("HKLM\\SOFTWARE\\QLW", {}), IsOk());
  EXPECT_EQ(*registry.Subkeys("HKLM"), Names{"Software"});
  EXPECT_EQ(*registry.Subkeys("hklm\\software"), Names{"Qlw"});
  EXPECT_EQ(*registry.Subkeys("HKCU"), Names{});
  EXPECT_TRUE(*registry.Exists("hklm\\software"));
  EXPECT_FALSE(*registry.Exists("hkcu\\software"));
  EXPECT_EQ(*registry.Read("hkcu\\software"), RegistryValues{});
  // Roots have values like any key.
  EXPECT_THAT(registry.Write("HKCU", Some("a")), IsOk());
  EXPECT_EQ(*registry.Read("hkey_current_user"), Some("a"));
}

TEST_F(RegistryTest, RefusesWhatIsNoKey) {
  Registry registry = InMemory();
  const std::string deep = [] {
    std::string key = "HKLM";
    for (std::size_t i = 0; i < kMaxKeyDepth; ++i) key += "\\a";
    return key;
  }();
  for (const std::string& key :
       {std::string(), std::string("\\"), std::string("software"), std::string("HKEY_USERS\\a"),
        std::string("HKLM\\\xFF"), "HKLM\\" + std::string(kMaxKeyPart + 1, 'a'), deep,
        std::string("HKLM\\a\0b", 8)}) {
    EXPECT_THAT(registry.Write(key, {}), FailsWith(Outcome::WrongFormat)) << key;
    EXPECT_THAT(registry.Read(key), FailsWith(Outcome::WrongFormat)) << key;
    EXPECT_THAT(registry.SetValue(key, "a", {}), FailsWith(Outcome::WrongFormat)) << key;
  }
}

TEST_F(RegistryTest, DeletesTreesAndSingleValues) {
  Registry registry = InMemory();
  for (const char* name :
       {"Job 0001", "Job 0001\\Liste\\x", "Job 00010", "Job 0001]", "Job 0001 b", "job 0002"}) {
    ASSERT_THAT(registry.Write(std::string("HKLM\\Jobs\\") + name, Some(name)), IsOk());
  }
  EXPECT_THAT(registry.DeleteKey("HKLM\\JOBS\\job 0001"), IsOk());
  EXPECT_EQ(*registry.Subkeys("HKLM\\Jobs"), (Names{"Job 0001 b", "Job 00010", "Job 0001]", "job 0002"}));
  EXPECT_FALSE(*registry.Exists("HKLM\\Jobs\\Job 0001\\Liste"));
  EXPECT_THAT(registry.DeleteKey("HKLM\\Jobs\\none"), IsOk());

  EXPECT_THAT(registry.SetValue("HKLM\\Jobs\\Job 0002", "TITLE", {RegistryValue::Kind::Text, "neu"}), IsOk());
  EXPECT_THAT(registry.DeleteValue("HKLM\\Jobs\\Job 0002", "melodie"), IsOk());
  EXPECT_THAT(registry.DeleteValue("HKLM\\Jobs\\Job 0002", "melodie"), IsOk());
  const auto values = registry.Read("HKLM\\Jobs\\Job 0002");
  EXPECT_EQ(values->All().size(), 2U);
  EXPECT_EQ(values->Text("Title"), "neu");

  EXPECT_THAT(registry.DeleteKey("HKLM"), IsOk());
  EXPECT_EQ(*registry.Subkeys("HKLM"), Names{});
}

TEST_F(RegistryTest, ATransactionIsAllOrNothing) {
  const std::string path = directory.File("neu/verzeichnis/registry.sqlite");
  {
    auto registry = Registry::Open(path);
    ASSERT_THAT(registry, IsOk());
    EXPECT_THAT(registry->Write(kKey, Some("vorher")), IsOk());
    EXPECT_THAT(registry->Transaction([&] {
      EXPECT_THAT(registry->Write(kKey, Some("nachher")), IsOk());
      EXPECT_THAT(registry->DeleteKey("HKLM\\software"), IsOk());
      EXPECT_FALSE(*registry->Exists(kKey));
      return Outcome::Cancelled;
    }),
                FailsWith(Outcome::Cancelled));
    EXPECT_EQ(*registry->Read(kKey), Some("vorher"));
    EXPECT_THAT(registry->Transaction([&] {
      EXPECT_THAT(registry->Write("HKCU\\a", Some("a")), IsOk());
      return registry->Transaction([&] { return registry->Write(kKey, Some("nachher")); });
    }),
                IsOk());
  }
  const auto again = Registry::Open(path);
  ASSERT_THAT(again, IsOk());
  EXPECT_EQ(again->Notice(), "");
  EXPECT_EQ(*again->Read(kKey), Some("nachher"));
  EXPECT_EQ(*again->Read("HKCU\\a"), Some("a"));
  EXPECT_EQ(Listing(directory.File("neu/verzeichnis")), "registry.sqlite");
}

// Generation n of twenty keys; each save turns one whole generation into the next.
Outcome SaveGeneration(Registry& registry, int generation) {
  return registry.Transaction([&] {
    for (int job = 0; job < 20; ++job) {
      RegistryValues values;
      values.SetInteger("Generation", generation);
      values.SetText("Fill", std::string(3000, static_cast<char>('a' + generation % 26)));
      const Outcome written = registry.Write(Format("HKLM\\Jobs\\Job %04i", job), values);
      if (Failed(written)) return written;
    }
    return Outcome::Success;
  });
}

TEST_F(RegistryTest, AKillAtAnyMomentLeavesTheStateBeforeOrAfter) {
  const std::string path = directory.File("registry.sqlite");
  std::int64_t last = 0;
  for (int round = 0; round < 12; ++round) {
    int saved[2];  // the child says when its first save is done, so that a slow machine counts as well
    ASSERT_EQ(::pipe(saved), 0);
    const pid_t child = test::StartChild([&] {
      auto registry = Registry::Open(path);
      for (int generation = static_cast<int>(last) + 1; registry; ++generation) {
        if (Failed(SaveGeneration(*registry, generation))) return false;
        if (::write(saved[1], "s", 1) != 1) return false;
      }
      return false;
    });
    ::close(saved[1]);
    char signal = 0;
    EXPECT_EQ(::read(saved[0], &signal, 1), 1) << "nothing was saved at all";
    std::this_thread::sleep_for(std::chrono::milliseconds(7 * round));
    ::kill(child, SIGKILL);
    ASSERT_EQ(test::WaitForChild(child), -1);
    ::close(saved[0]);

    const auto registry = Registry::Open(path);
    ASSERT_THAT(registry, IsOk());
    EXPECT_EQ(registry->Notice(), "");
    const auto first = registry->Read("HKLM\\Jobs\\Job 0000")->Integer("Generation");
    for (int job = 1; job < 20; ++job) {
      EXPECT_EQ(registry->Read(Format("HKLM\\Jobs\\Job %04i", job))->Integer("Generation"), first) << job;
    }
    EXPECT_GT(first.value_or(0), last) << "a finished save was lost";
    last = first.value_or(0);
  }
}

TEST_F(RegistryTest, WhatIsNoRegistryIsRefusedAndStaysAsItIs) {
  const std::string path = directory.File("registry.sqlite");
  {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(directory.File("other").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE keys(a)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
  }
  const std::string foreign = Content(directory.File("other"));
  for (const std::string& bad : {std::string("MThd"), std::string(5000, 'x'), foreign}) {
    directory.Write("registry.sqlite", bad);
    for (const RegistryAccess access : {RegistryAccess::ReadOnly, RegistryAccess::ReadWrite}) {
      EXPECT_THAT(Registry::Open(path, access), FailsWith(Outcome::WrongFormat)) << bad.size();
    }
    EXPECT_EQ(Content(path), bad);
    EXPECT_EQ(Listing(directory.Path()), "other registry.sqlite");
  }
  directory.Write("registry.sqlite", "");  // an empty file is a new one
  EXPECT_EQ(Registry::Open(path)->Notice(), "");
}

TEST_F(RegistryTest, AtItsOwnPlaceWhatIsNoRegistryMakesRoom) {
  EXPECT_EQ(test::InChild([&] {
              ::setenv("XDG_CONFIG_HOME", directory.Path().c_str(), 1);
              ::unsetenv("STAVORA_REGISTRY");
              const std::string path = DefaultRegistryPath();
              const auto beside = [&](const char* name) { return JoinPath(DirectoryOf(path), name); };
              if (Failed(MakeDirectories(std::string(DirectoryOf(path))))) return false;
              if (Failed(WriteFile(path, AsBytes("kaputt")))) return false;
              if (Failed(WriteFile(beside("registry.defekt.sqlite"), AsBytes("älter")))) return false;
              const bool refused = !Registry::Open(path, RegistryAccess::ReadOnly);
              const auto registry = Registry::Open(path);
              // An older one that was set aside is never replaced.
              return refused && registry &&
                     registry->Notice().find("registry.defekt-2") != std::string::npos &&
                     Content(beside("registry.defekt-2.sqlite")) == "kaputt" &&
                     Content(beside("registry.defekt.sqlite")) == "älter";
            }),
            0);
}

// Twenty jobs of one generation, the first of them longer than a page.
std::string StoredGeneration(const std::string& path) {
  auto registry = Registry::Open(path);
  EXPECT_THAT(registry, IsOk());
  EXPECT_THAT(SaveGeneration(*registry, 7), IsOk());
  RegistryValues values = *registry->Read("HKLM\\Jobs\\Job 0000");
  values.SetText("Liste", std::string(20'000, 'l'));
  EXPECT_THAT(registry->Write("HKLM\\Jobs\\Job 0000", values), IsOk());
  EXPECT_THAT(registry->DeleteKey("HKLM\\Jobs\\Job 0019"), IsOk());
  return Content(path);
}

std::map<std::string, RegistryValues> AllJobs(const Registry& registry) {
  std::map<std::string, RegistryValues> all;
  for (int job = 0; job < 20; ++job) {
    const std::string key = Format("HKLM\\Jobs\\Job %04i", job);
    if (registry.Exists(key).value_or(false)) all[key] = registry.Read(key).value_or(RegistryValues{});
  }
  return all;
}

TEST_F(RegistryTest, OneFlippedBitCostsAtMostOneKey) {
  const std::string path = directory.File("registry.sqlite");
  const std::string good = StoredGeneration(path);
  const auto before = AllJobs(*Registry::Open(path));
  ASSERT_EQ(before.size(), 19U);
  int noticed = 0;
  for (std::size_t at = 0; at < good.size(); at += at < 128 ? 5 : at % kRegistryPage < 64 ? 31 : 2999) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ (1 << at % 8));
    directory.Write("registry.sqlite", bad);
    const auto registry = Registry::Open(path, RegistryAccess::ReadOnly);
    ASSERT_THAT(registry, IsOk()) << at;
    EXPECT_EQ(Content(path), bad) << "a look changed the file";
    if (!registry->Notice().empty()) ++noticed;
    auto after = AllJobs(*registry);
    std::size_t lost = 0;
    for (const auto& [key, values] : before) {
      const auto found = after.find(key);
      if (found == after.end()) {
        ++lost;
      } else {
        EXPECT_TRUE(found->second == values) << at << ' ' << key;
      }
    }
    EXPECT_LE(lost, registry->Notice().empty() ? 0U : 1U) << at;
    EXPECT_LE(after.size(), before.size()) << "a deleted key came back " << at;
  }
  EXPECT_GT(noticed, 20);
  EXPECT_EQ(Listing(directory.Path()), "registry.sqlite");
}

TEST_F(RegistryTest, ADamagedFileIsMendedAndKept) {
  const std::string path = directory.File("registry.sqlite");
  const std::string good = StoredGeneration(path);
  const auto before = AllJobs(*Registry::Open(path));
  std::string flipped = good;
  // In its row, and in what an older state may have left of it.
  for (std::size_t at = good.find("Job 0005"); at != std::string::npos; at = good.find("Job 0005", at + 1))
    flipped[at + 200] = static_cast<char>(flipped[at + 200] ^ 4);
  for (const std::string& bad : {flipped, good.substr(0, good.size() - 1), good.substr(0, good.size() / 2),
                                 std::string(100, '\0') + good.substr(100)}) {
    directory.Write("registry.sqlite", bad);
    {
      auto registry = Registry::Open(path);
      ASSERT_THAT(registry, IsOk());
      EXPECT_NE(registry->Notice().find("registry.defekt.sqlite"), std::string::npos) << registry->Notice();
      EXPECT_EQ(registry->Notice().find("\"job 0005\"") != std::string::npos, bad == flipped);
      EXPECT_THAT(registry->Write(kKey, Some("danach")), IsOk());
    }
    EXPECT_EQ(Content(directory.File("registry.defekt.sqlite")), bad);
    const auto again = Registry::Open(path);
    ASSERT_THAT(again, IsOk());
    EXPECT_EQ(again->Notice(), "") << "mended for good";
    EXPECT_EQ(*again->Read(kKey), Some("danach"));
    const auto after = AllJobs(*again);
    EXPECT_GE(after.size(), before.size() / 3);
    for (const auto& [key, values] : after) EXPECT_TRUE(before.at(key) == values) << key;
    if (bad.size() == good.size()) {
      EXPECT_EQ(after.size(), before.size() - (bad == flipped ? 1 : 0));
    }
    EXPECT_EQ(Listing(directory.Path()), "registry.defekt.sqlite registry.sqlite");
    std::filesystem::remove(directory.File("registry.defekt.sqlite"));
  }
}

TEST_F(RegistryTest, ALookMakesNothing) {
  const std::string path = directory.File("neu/registry.sqlite");
  auto missing = Registry::Open(path, RegistryAccess::ReadOnly);
  ASSERT_THAT(missing, IsOk());
  EXPECT_EQ(*missing->Subkeys("HKLM"), Names{});
  EXPECT_EQ(Listing(directory.Path()), "");
  ASSERT_THAT(Registry::Open(path)->Write(kKey, Some("a")), IsOk());
  auto registry = Registry::Open(path, RegistryAccess::ReadOnly);
  EXPECT_THAT(registry->Write(kKey, Some("b")), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(*registry->Read(kKey), Some("a"));
}

TEST_F(RegistryTest, TakesAllOfAnother) {
  auto registry = *Registry::Open(directory.File("registry.sqlite"));
  Registry other = InMemory();
  ASSERT_THAT(registry.Write(kKey, Some("hier")), IsOk());
  ASSERT_THAT(registry.SetValue(kKey, "Bleibt", {RegistryValue::Kind::Text, "ja"}), IsOk());
  ASSERT_THAT(other.Write(kKey, Some("dort")), IsOk());
  ASSERT_THAT(other.Write("HKCU\\Neu", Some("neu")), IsOk());
  ASSERT_THAT(registry.TakeAll(other), IsOk());
  EXPECT_EQ(registry.Read(kKey)->Text("Title"), "hier");
  EXPECT_EQ(registry.Read(kKey)->Text("Title (2)"), "dort");
  EXPECT_EQ(registry.Read(kKey)->All().size(), 5U) << "the same value comes once";
  EXPECT_EQ(registry.Read(kKey)->Text("Bleibt"), "ja");
  EXPECT_EQ(*registry.Read("HKCU\\Neu"), Some("neu"));
  // What cannot be read here is not written over.
  sqlite3* damage = nullptr;
  ASSERT_EQ(sqlite3_open(directory.File("registry.sqlite").c_str(), &damage), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(damage, "UPDATE keys SET checksum=0", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(damage);
  EXPECT_THAT(registry.TakeAll(other), FailsWith(Outcome::WrongFormat));
}

TEST_F(RegistryTest, ALockedFileFailsAfterABoundedWaitAndLosesNothing) {
  const std::string path = directory.File("registry.sqlite");
  auto registry = Registry::Open(path, RegistryAccess::ReadWrite, 50ms);
  ASSERT_THAT(registry, IsOk());
  ASSERT_THAT(registry->Write(kKey, Some("vorher")), IsOk());

  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_THAT(registry->Write(kKey, Some("nachher")), FailsWith(Outcome::InUse));
  EXPECT_THAT(registry->Read(kKey), FailsWith(Outcome::InUse));
  EXPECT_THAT(Registry::Open(path, RegistryAccess::ReadWrite, 50ms), FailsWith(Outcome::InUse));
  EXPECT_EQ(Listing(directory.Path()).find("defekt"), std::string::npos);
  EXPECT_NE(RegistryFailureText(Outcome::InUse, path).find(path), std::string::npos);
  sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
  sqlite3_close(other);

  EXPECT_EQ(*registry->Read(kKey), Some("vorher"));
  EXPECT_THAT(registry->Write(kKey, Some("nachher")), IsOk());
}

TEST_F(RegistryTest, PlacesThatCannotHoldOne) {
  directory.Write("file", "x");
  for (const std::string& path : {directory.File("file/registry.sqlite"), directory.Path(), std::string(),
                                  std::string("/dev/null/registry.sqlite")}) {
    EXPECT_THAT(Registry::Open(path), FailsWith(Outcome::TargetFailed)) << path;
  }
}

TEST_F(RegistryTest, AFullDiskKeepsTheStateBefore) {
  const std::string path = directory.File("registry.sqlite");
  ASSERT_THAT(Registry::Open(path)->Write(kKey, Some("vorher")), IsOk());
  EXPECT_EQ(test::InChild([&] {
              std::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{20000, 20000};
              auto registry = Registry::Open(path);
              if (!registry || ::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
              return SaveGeneration(*registry, 1) == Outcome::WriteFailed &&
                     *registry->Read(kKey) == Some("vorher");
            }),
            0);
  const auto registry = Registry::Open(path);
  EXPECT_EQ(registry->Notice(), "");
  EXPECT_EQ(*registry->Read(kKey), Some("vorher"));
  EXPECT_FALSE(*registry->Exists("HKLM\\Jobs"));
}

TEST(RegistryBlob, RoundTrip) {
  RegistryValues values;
  for (int i = 0; i < 300; ++i) {
    values.SetText(Format("SourceFile %04i", i),
                   "/home/anna/" + std::string(static_cast<std::size_t>(i), 'x'));
  }
  values.SetText("", "");
  values.SetText("lang", std::string(70000, 'y'));
  values.SetBinary("lang 2", AsBytes(std::string(70000, '\0')));
  const Bytes block = PackValues(values);
  const auto again = UnpackValues(block);
  ASSERT_THAT(again, IsOk());
  EXPECT_EQ(*again, values);
  for (std::size_t size = 1; size < block.size(); size += 1 + size / 50) {
    const auto part = UnpackValues(ByteView(block).first(size));
    if (part) {
      EXPECT_LT(part->All().size(), values.All().size()) << size;
    }
  }
}

TEST(RegistryBlob, RefusesWhatContradictsItself) {
  const Bytes cases[] = {
      {2, 0, 0, 0, 0},                             // no such kind
      {0, 1, 0, 0, 0},                             // shares with nothing
      {0, 0, 9, 'a', 0, 0},                        // longer than the block
      {0, 0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00},  // an endless length
      {0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F, 'a'},   // a length beyond memory
  };
  for (const Bytes& bytes : cases) EXPECT_THAT(UnpackValues(bytes), FailsWith(Outcome::WrongFormat));
}

}  // namespace
}  // namespace ts5
