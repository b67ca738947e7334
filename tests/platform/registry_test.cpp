#include "platform/registry.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "platform/files.h"
#include "platform/registry_blob.h"
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

TEST(Registry, KeysAreFoundWithoutRegardToCaseAndKeepTheirSpelling) {
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
}

TEST(Registry, RootsHaveValuesLikeAnyKey) {
  Registry registry = InMemory();
  EXPECT_THAT(registry.Write("HKCU", Some("a")), IsOk());
  EXPECT_THAT(registry.Write("HKCU\\b", {}), IsOk());
  EXPECT_EQ(*registry.Read("hkey_current_user"), Some("a"));
  EXPECT_EQ(*registry.Subkeys("HKCU"), Names{"b"});
}

TEST(Registry, RefusesWhatIsNoKey) {
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

TEST(Registry, DeletesTreesAndSingleValues) {
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

TEST(Registry, ATransactionIsAllOrNothing) {
  const TemporaryDirectory directory;
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

TEST(Registry, AKillAtAnyMomentLeavesTheStateBeforeOrAfter) {
  const TemporaryDirectory directory;
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

TEST(Registry, ADamagedFileIsSetAsideAndSaidSo) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("registry.sqlite");
  {
    auto registry = Registry::Open(path);
    ASSERT_THAT(registry, IsOk());
    ASSERT_THAT(SaveGeneration(*registry, 7), IsOk());
  }
  const std::string good = Content(path);
  std::string foreign;
  {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(directory.File("other").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE keys(a)", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
    foreign = Content(directory.File("other"));
  }
  for (const std::string& bad :
       {std::string("MThd"), std::string(5000, 'x'), good.substr(0, 20), good.substr(0, 4095),
        good.substr(0, good.size() / 2), good.substr(0, good.size() - 1), foreign}) {
    directory.Write("registry.sqlite", bad);
    const auto registry = Registry::Open(path);
    ASSERT_THAT(registry, IsOk());
    EXPECT_NE(registry->Notice().find("registry.defekt.sqlite"), std::string::npos) << bad.size();
    EXPECT_EQ(*registry->Subkeys("HKLM"), Names{});
    EXPECT_EQ(Content(directory.File("registry.defekt.sqlite")), bad);
    std::filesystem::remove(directory.File("registry.defekt.sqlite"));
  }
  directory.Write("registry.sqlite", "");  // an empty file is a new one
  EXPECT_EQ(Registry::Open(path)->Notice(), "");

  // An older one that was set aside is never replaced.
  directory.Write("registry.defekt.sqlite", "älter");
  directory.Write("registry.sqlite", "kaputt");
  EXPECT_NE(Registry::Open(path)->Notice().find("registry.defekt-2.sqlite"), std::string::npos);
  EXPECT_EQ(Content(directory.File("registry.defekt.sqlite")), "älter");
}

TEST(Registry, AChangedByteIsHarmlessOrNoticed) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("registry.sqlite");
  const auto read = [](const Registry& registry) {
    std::vector<RegistryValues> all;
    const auto jobs = registry.Subkeys("HKLM\\Jobs");
    for (const std::string& job : *jobs) all.push_back(*registry.Read("HKLM\\Jobs\\" + job));
    return all;
  };
  {
    auto registry = Registry::Open(path);
    ASSERT_THAT(registry, IsOk());
    ASSERT_THAT(SaveGeneration(*registry, 7), IsOk());
  }
  const auto before = read(*Registry::Open(path));
  const std::string good = Content(path);
  int noticed = 0;
  for (std::size_t at = 0; at < good.size(); at += at < 100 ? 7 : 997) {
    std::string bad = good;
    bad[at] = static_cast<char>(bad[at] ^ 0x41);
    directory.Write("registry.sqlite", bad);
    const auto registry = Registry::Open(path);
    ASSERT_THAT(registry, IsOk()) << at;
    if (registry->Notice().empty()) {
      EXPECT_TRUE(read(*registry) == before) << at;
    } else {
      ++noticed;
      std::filesystem::remove(directory.File("registry.defekt.sqlite"));
    }
  }
  EXPECT_GT(noticed, 50);
}

TEST(Registry, ALockedFileFailsAfterABoundedWaitAndLosesNothing) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("registry.sqlite");
  auto registry = Registry::Open(path, 50ms);
  ASSERT_THAT(registry, IsOk());
  ASSERT_THAT(registry->Write(kKey, Some("vorher")), IsOk());

  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(registry->Write(kKey, Some("nachher")), FailsWith(Outcome::InUse));
  EXPECT_THAT(registry->Read(kKey), FailsWith(Outcome::InUse));
  EXPECT_THAT(Registry::Open(path, 50ms), FailsWith(Outcome::InUse));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
  EXPECT_EQ(Listing(directory.Path()).find("defekt"), std::string::npos);
  EXPECT_NE(RegistryFailureText(Outcome::InUse, path).find(path), std::string::npos);
  sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
  sqlite3_close(other);

  EXPECT_EQ(*registry->Read(kKey), Some("vorher"));
  EXPECT_THAT(registry->Write(kKey, Some("nachher")), IsOk());
}

TEST(Registry, PlacesThatCannotHoldOne) {
  const TemporaryDirectory directory;
  directory.Write("file", "x");
  for (const std::string& path : {directory.File("file/registry.sqlite"), directory.Path(), std::string(),
                                  std::string("/dev/null/registry.sqlite")}) {
    EXPECT_THAT(Registry::Open(path), FailsWith(Outcome::TargetFailed)) << path;
  }
}

TEST(Registry, AFullDiskKeepsTheStateBefore) {
  const TemporaryDirectory directory;
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
