#include "orvane/rawpcm/raw_pcm_preset_store.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <cmath>
#include <limits>
#include <unordered_set>

#include "orvane/platform/error.h"
#include "orvane/text/json/json_text.h"
#include "tests/support/doubled_keys.h"
#include "tests/support/in_child.h"
#include "tests/support/random.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using Presets = std::vector<RawPCMPreset>;

RawPCMPreset preset(const std::string& name, double rate = 48000) {
  return {.id = *UUID::parse("123e4567-e89b-42d3-a456-426614174000"),
          .name = name,
          .format = {.sampleRate = rate,
                     .channelCount = 2,
                     .encoding = RawPCMFormat::Encoding::int16,
                     .headerSkipBytes = 512}};
}

const std::string kFile = R"([
  {
    "format": {
      "channelCount": 2,
      "encoding": "int16",
      "endianness": "little",
      "headerSkipBytes": 512,
      "isPlanar": false,
      "sampleRate": 48000,
      "trailingBytesTolerance": 0
    },
    "id": "123E4567-E89B-42D3-A456-426614174000",
    "name": "Field recorder"
  }
]
)";

class RawPCMPresetStoreTest : public testing::Test {
 protected:
  void write(const std::string& text) const { test::writeFile(store.fileURL, text); }

  test::TemporaryDirectory folder;
  RawPCMPresetStore store{folder / "data/Orvane"};
};

TEST_F(RawPCMPresetStoreTest, HasAFileOfItsOwnInTheFolder) {
  EXPECT_EQ(store.fileURL, folder / "data/Orvane/raw-pcm-presets.json");
}

TEST_F(RawPCMPresetStoreTest, LiesAmongTheUsersDataByDefault) {
  const auto end = test::runInChild([] {
    setenv("XDG_DATA_HOME", "/data", 1);
    return RawPCMPresetStore::defaultDirectory() == "/data/Orvane" ? 0 : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(RawPCMPresetStoreTest, IsEmptyAtFirst) {
  EXPECT_EQ(store.load(), Presets{});
  EXPECT_EQ(store.loadIntact(), Presets{});
  EXPECT_EQ(store.preset("any"), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(folder / "data"));
}

TEST_F(RawPCMPresetStoreTest, WritesASortedPrettyListAndMakesItsFolder) {
  store.save(Presets{preset("Field recorder")});
  EXPECT_EQ(test::readFile(store.fileURL), kFile);
  store.save(Presets{});
  EXPECT_EQ(store.loadIntact(), Presets{});
}

TEST_F(RawPCMPresetStoreTest, ReadsKeysInAnyOrderAndPassesOverUnknownOnes) {
  write(R"([{"name":"Field recorder","colour":7,"id":"123e4567-e89b-42d3-a456-426614174000",)"
        R"("format":{"sampleRate":48000,"channelCount":2,"encoding":"int16","endianness":)"
        R"("little","isPlanar":false,"headerSkipBytes":512,"trailingBytesTolerance":0}}])");
  EXPECT_EQ(store.load(), Presets{preset("Field recorder")});
}

TEST_F(RawPCMPresetStoreTest, BringsAnyListBackInItsOrder) {
  test::Random random(8);
  for (int round = 0; round < 50; ++round) {
    Presets presets(random.below(6));
    for (auto& each : presets) {
      each.id = UUID::random();
      for (auto length = random.below(8); length > 0; --length)
        each.name += std::array{"a", "Ü", "\"", "\\", "\n", "語", "\u202E", "\t"}[random.below(8)];
      each.format.sampleRate = random.between(-1e6, 1e6);
      each.format.channelCount = static_cast<std::int64_t>(random.next());
      each.format.encoding = kAllRawPCMEncodings[random.below(7)];
      each.format.endianness = kAllRawPCMEndiannesses[random.below(2)];
      each.format.isPlanar = random.below(2) == 1;
      each.format.headerSkipBytes = static_cast<std::int64_t>(random.next());
      each.format.trailingBytesTolerance = static_cast<std::int64_t>(random.next());
    }
    store.save(presets);
    EXPECT_EQ(store.load(), presets);
    EXPECT_EQ(store.loadIntact(), presets);
  }
}

TEST_F(RawPCMPresetStoreTest, KeepsWhatNoFileCanHave) {
  auto odd = preset("odd", -1);
  odd.format.channelCount = 0;
  store.save(Presets{odd, odd});
  EXPECT_EQ(store.load(), (Presets{odd, odd}));
}

TEST_F(RawPCMPresetStoreTest, RefusesARateThatIsNotFinite) {
  store.save(Presets{preset("good")});
  for (const double rate : {std::numeric_limits<double>::infinity(), std::nan("")})
    EXPECT_THROW(store.save(Presets{preset("bad", rate)}), EncodingError);
  EXPECT_EQ(store.load(), Presets{preset("good")});
}

TEST_F(RawPCMPresetStoreTest, IsEmptyForAFileThatIsNoList) {
  std::string withoutName = kFile;
  withoutName.replace(withoutName.find("\"name\""), 6, "\"nome\"");
  std::string null = kFile;
  null.replace(null.find("48000"), 5, "null");
  const std::string first = kFile.substr(1, kFile.size() - 3);
  for (const auto& text : {std::string(), std::string("x"), first, withoutName, null,
                           "[" + first + "," + withoutName.substr(1), kFile + "]"}) {
    write(text);
    EXPECT_EQ(store.load(), Presets{}) << text;
    EXPECT_EQ(store.preset("Field recorder"), std::nullopt);
    EXPECT_THROW(store.loadIntact(), DecodingError) << text;
  }
  for (const char* const key : {"id", "name", "format"}) {
    std::string text = kFile;
    text.replace(text.find('"' + std::string(key) + '"') + 1, 1, "X");
    write(text);
    EXPECT_EQ(store.load(), Presets{}) << key;
  }
}

TEST_F(RawPCMPresetStoreTest, NamesThePlaceThatCannotBeRead) {
  write(R"([{"id":"123e4567-e89b-42d3-a456-426614174000","name":"a"}])");
  try {
    store.loadIntact();
    FAIL();
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.errorDescription(), "raw-pcm-presets.json: The key \"[0].format\" is missing.");
  }
}

TEST_F(RawPCMPresetStoreTest, IsEmptyForWhatIsNoFile) {
  std::filesystem::create_directories(store.fileURL);
  EXPECT_EQ(store.load(), Presets{});
  EXPECT_THROW(store.loadIntact(), PlatformError);
  EXPECT_THROW(store.save(Presets{}), PlatformError);
}

TEST_F(RawPCMPresetStoreTest, SaysWhenItsFolderCannotBeMade) {
  folder.write("data", "in the way");
  EXPECT_THROW(store.save(Presets{}), PlatformError);
  EXPECT_THROW(store.update([](Presets&) {}), PlatformError);
}

TEST_F(RawPCMPresetStoreTest, FindsANameInAnyCase) {
  store.save(Presets{preset("s16 mono", 1), preset("S16 MONO", 2), preset("Straße", 3),
                     preset("Caf\u00E9", 4), preset("", 5)});
  EXPECT_EQ(store.preset("S16 Mono")->format.sampleRate, 1) << "the earlier one";
  EXPECT_EQ(store.preset("STRASSE")->format.sampleRate, 3);
  EXPECT_EQ(store.preset("CAFE\u0301")->format.sampleRate, 4);
  EXPECT_EQ(store.preset("")->format.sampleRate, 5);
  EXPECT_EQ(store.preset("s16"), std::nullopt);
}

TEST_F(RawPCMPresetStoreTest, LeavesTheFileAloneWhenAnUpdateFails) {
  store.save(Presets{preset("good")});
  EXPECT_THROW(store.update([](Presets& presets) {
    presets.clear();
    throw std::runtime_error("changed my mind");
  }),
               std::runtime_error);
  EXPECT_EQ(store.load(), Presets{preset("good")});
  write("not a list");
  EXPECT_THROW(store.update([](Presets& presets) { presets.clear(); }), DecodingError);
  EXPECT_EQ(test::readFile(store.fileURL), "not a list");
}

TEST_F(RawPCMPresetStoreTest, LosesNoneOfTwelveUpdatesAtOnce) {
  constexpr int kSavers = 12, kEach = 5;
  std::vector<pid_t> children;
  for (int saver = 0; saver < kSavers; ++saver)
    children.push_back(test::startInChild([&] {
      for (int i = 0; i < kEach; ++i)
        store.update([&](Presets& presets) {
          presets.push_back(preset(std::to_string(saver) + "." + std::to_string(i)));
        });
      return 0;
    }));
  for (const pid_t child : children) EXPECT_EQ(test::waitFor(child).exitCode, 0);
  std::unordered_set<std::string> names;
  for (const auto& each : store.loadIntact()) names.insert(each.name);
  EXPECT_EQ(names.size(), std::size_t{kSavers * kEach});
}

TEST(RawPCMPreset, HasAJSONFormAndAHash) {
  EXPECT_EQ(encodeJSON(preset("a")),
            R"({"id":"123E4567-E89B-42D3-A456-426614174000","name":"a","format":)" +
                encodeJSON(preset("a").format) + "}");
  EXPECT_EQ(decodeJSON<RawPCMPreset>(encodeJSON(preset("a"))), preset("a"));
  test::expectEachKeyOnce(encodeJSON(preset("a")), decodeJSON<RawPCMPreset>);
  const std::unordered_set<RawPCMPreset> set{preset("a"), preset("a"), preset("b")};
  EXPECT_EQ(set.size(), 2U);
}

}  // namespace
}  // namespace orvane
