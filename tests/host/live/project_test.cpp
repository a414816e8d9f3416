#include "live/project.h"

#include <QTemporaryDir>
#include <filesystem>
#include <fstream>

#include "live/line_members.h"
#include "loaded_library.h"
#include "text/tags.h"
#include "text/text_file.h"

namespace dov417 {

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ProjectFile : public LoadedLibrary {
protected:
    static Project parsed(const std::string& text)
    {
        return parseProject(text, "plant.json");
    }
    static std::string mistake(const std::string& text)
    {
        return complaint([&] { parsed(text); });
    }
    // Within {"version": 1, ...}.
    static std::string mistakeIn(const std::string& members)
    {
        return mistake("{\"version\": 1, " + members + "}");
    }
    std::string mistakeInTags(const std::string& tags)
    {
        return complaint([&] {
            tagsOf(library, parsed("{\"version\": 1,\n\"tags\": [" + tags + "]}"), "plant.json");
        });
    }
    std::string path(const std::string& name) const
    {
        return folder_.filePath(QString::fromStdString(name)).toStdString();
    }
    static void put(const std::string& file, const std::string& text)
    {
        std::ofstream(file) << text;
    }

private:
    QTemporaryDir folder_;
};

const char* const everything = R"({
  "version": 1,
  "line": {
    "port": "tcp://plant:4001",
    "simulated": true,
    "line": "9600,8,NONE,1",
    "timeout-min": 200,
    "timeout-max": 4000,
    "reply-gap": 60,
    "horizon": 12.5,
    "no-function-8": true,
    "retries": 5,
    "probe": 8000,
    "turnaround": 150,
    "gap": 40,
    "max-registers": 60
  },
  "stations": [
    {
      "number": 1,
      "name": "press"
    },
    {
      "number": 17,
      "name": "oven",
      "max-registers": 32
    }
  ],
  "tags": [
    {
      "name": "speed",
      "station": 17,
      "register": "R_D",
      "address": "10",
      "count": 3,
      "format": "unsigned:high-first",
      "comment": "of the belt",
      "scale": 0.1,
      "offset": -5.0,
      "unit": "m/s",
      "decimals": 2,
      "min": 0.0,
      "max": 1e+20
    },
    {
      "name": "lamp",
      "register": "M_bit",
      "address": "1.10"
    }
  ],
  "pages": [
    {
      "b": 1,
      "a": [
        2.5,
        null
      ]
    }
  ]
}
)";

TEST_F(ProjectFile, CarriesEverySetting)
{
    const Project project = parsed(everything);
    const LineSetup& line = project.line;
    EXPECT_EQ(line.port, "tcp://plant:4001");
    EXPECT_TRUE(line.simulated);
    EXPECT_EQ(line.line, "9600,8,NONE,1");
    EXPECT_EQ(line.timeoutMs, std::nullopt);
    EXPECT_EQ(line.timeoutMinMs, 200);
    EXPECT_EQ(line.timeoutMaxMs, 4000);
    EXPECT_EQ(line.replyGapMs, 60);
    EXPECT_EQ(line.horizonSeconds, 12.5);
    EXPECT_FALSE(line.mayMark);
    EXPECT_EQ(line.retries, 5);
    EXPECT_EQ(line.maxProbeMs, 8000);
    EXPECT_EQ(line.turnaroundMs, 150);
    EXPECT_EQ(line.gap, 40);
    EXPECT_EQ(line.maxRegisters, 60);
    EXPECT_EQ(parsed("{\"version\": 1, \"line\": {\"timeout\": 300}}").line.timeoutMs, 300);

    ASSERT_EQ(project.stations.size(), 2u);
    EXPECT_EQ(project.stations[0].name, "press");
    EXPECT_EQ(project.stations[0].maxRegisters, std::nullopt);
    EXPECT_EQ(project.stations[1].number, 17);
    EXPECT_EQ(project.stations[1].maxRegisters, 32);

    const std::vector<Tag> tags = tagsOf(library, project, "plant.json");
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].name, "speed");
    EXPECT_EQ(tags[0].address, (Address{17, "R_D", Width::doubleWord, 10, 6}));
    EXPECT_EQ(tags[0].format.order, WordOrder::highFirst);
    EXPECT_EQ(tags[0].comment, "of the belt");
    EXPECT_EQ(tags[0].scaling.scale, 0.1);
    EXPECT_EQ(tags[0].scaling.offset, -5);
    EXPECT_EQ(tags[0].scaling.unit, "m/s");
    EXPECT_EQ(tags[0].scaling.decimals, 2);
    EXPECT_EQ(tags[0].limits.min, 0);
    EXPECT_EQ(tags[0].limits.max, 1e20);
    EXPECT_EQ(tags[0].line, 30);
    EXPECT_EQ(tags[1].address, (Address{1, "M_bit", Width::bit, 26, 1}));
}

TEST_F(ProjectFile, IsWrittenAsItWasRead)
{
    EXPECT_EQ(toText(parsed(everything)), everything);
}

TEST_F(ProjectFile, AnEmptyOneHasAVersionAlone)
{
    EXPECT_EQ(toText(Project()), "{\n  \"version\": 1\n}\n");
    const Project read = parsed("{\"version\": 1}");
    for (const LineMember& member : lineMembers())
        EXPECT_TRUE(isDefault(member, read.line)) << member.name;
}

TEST_F(ProjectFile, UnknownMembersOfANewerFileAreKept)
{
    const std::string newer = R"({
  "version": 7,
  "line": {
    "retries": 5,
    "colour": "red"
  },
  "stations": [
    {
      "number": 2,
      "floor": 3
    }
  ],
  "tags": [
    {
      "name": "a",
      "register": "T",
      "address": "1",
      "sound": {
        "file": "x"
      }
    }
  ],
  "plots": [],
  "window": null
}
)";
    const Project project = parsed(newer);
    EXPECT_EQ(project.version, 7);
    EXPECT_EQ(project.line.retries, 5);
    EXPECT_EQ(toText(project), newer);
}

TEST_F(ProjectFile, AMisspeltMemberOfAKnownVersionIsRefused)
{
    EXPECT_EQ(mistakeIn("\n\"line\": {\"timout\": 5}"),
              "plant.json:2:20: line.timout: there is no such member; there are port, simulated, "
              "line, timeout, timeout-min, timeout-max, reply-gap, horizon, no-function-8, "
              "retries, probe, turnaround, gap, max-registers");
    EXPECT_EQ(mistakeIn("\n\"stations\": [{\"number\": 1, \"nane\": \"\"}]"),
              "plant.json:2:36: stations[0].nane: there is no such member; there are number, "
              "name, max-registers");
    EXPECT_THAT(mistakeIn("\"tags\": [{\"name\": \"a\", \"scal\": 2}]"),
                HasSubstr("tags[0].scal: no member of a tag, which are name, station, "));
}

TEST_F(ProjectFile, IsRefusedWithTheFirstMistakesPlaceAndMember)
{
    EXPECT_EQ(mistake("[1]"), "plant.json:1:1: a project is an object");
    EXPECT_EQ(mistake("{}"), "plant.json:1:1: no project: its version is missing");
    EXPECT_EQ(mistake("{\"version\": 0}"),
              "plant.json:1:13: version: a whole number from 1 to 1000000 is needed");
    EXPECT_EQ(mistakeIn("\"line\": 5"), "plant.json:1:24: line: an object is needed");
    EXPECT_EQ(mistakeIn("\"line\": {\"timeout\": 0}"),
              "plant.json:1:36: line.timeout: a whole number from 1 to 600000 is needed");
    EXPECT_EQ(mistakeIn("\"line\": {\"retries\": 2.5}"),
              "plant.json:1:36: line.retries: a whole number from 1 to 1000 is needed");
    EXPECT_EQ(mistakeIn("\"line\": {\"gap\": 18446744073709551615}"),
              "plant.json:1:32: line.gap: a whole number from 0 to 65535 is needed");
    EXPECT_EQ(mistakeIn("\"line\": {\"horizon\": 0}"),
              "plant.json:1:36: line.horizon: a number from 0.1 to 3600.0 is needed");
    EXPECT_EQ(mistakeIn("\"line\": {\"simulated\": 1}"),
              "plant.json:1:38: line.simulated: true or false is needed");
    EXPECT_EQ(mistakeIn("\"line\": {\"port\": 1}"), "plant.json:1:33: line.port: a text is needed");
    EXPECT_THAT(mistakeIn("\"line\": {\"port\": \"tcp://\"}"),
                StartsWith("plant.json:1:33: line.port: tcp://"));
    EXPECT_THAT(mistakeIn("\"line\": {\"line\": \"9600,7,EVEN,1\"}"),
                StartsWith("plant.json:1:33: line.line: "));
    EXPECT_EQ(mistakeIn("\"line\": {\"timeout-min\": 5, \"timeout\": 5}"),
              "plant.json:1:40: line.timeout-min: excludes timeout");
    EXPECT_EQ(mistakeIn("\"line\": {\"timeout-min\": 20000}"),
              "plant.json:1:40: line.timeout-min: timeout-max is less than timeout-min");
    EXPECT_EQ(mistakeIn("\"stations\": {}"),
              "plant.json:1:28: stations: a list of stations is needed");
    EXPECT_EQ(mistakeIn("\"stations\": [{\"name\": \"x\"}]"),
              "plant.json:1:29: stations[0]: a station needs its number");
    EXPECT_EQ(mistakeIn("\"stations\": [{\"number\": 248}]"),
              "plant.json:1:40: stations[0].number: a whole number from 1 to 247 is needed");
    EXPECT_EQ(mistakeIn("\"stations\": [{\"number\": 2}, {\"number\": 2}]"),
              "plant.json:1:55: stations[1].number: 2 is already a station's");
    EXPECT_EQ(mistakeIn("\"stations\": [{\"number\": 2, \"max-registers\": 1}]"),
              "plant.json:1:60: stations[0].max-registers: a whole number from 2 to 128 is needed");
    EXPECT_EQ(mistakeIn("\"tags\": [], \"tagFile\": \"a.csv\""),
              "plant.json:1:39: tagFile: excludes tags");
}

TEST_F(ProjectFile, AMistakeInATagHasItsPlaceAndMember)
{
    const std::string good = R"({"name": "a", "register": "T", "address": 1})";
    EXPECT_EQ(mistakeInTags(good), "");
    EXPECT_EQ(mistakeInTags("5"), "plant.json:2:10: tags[0]: a tag is an object");
    EXPECT_EQ(mistakeInTags(good + ",\n" + good),
              "plant.json:3:10: tags[1].name: 'a' is already tags[0]");
    EXPECT_EQ(mistakeInTags(R"({"name": "a", "register": "T"})"),
              "plant.json:2:10: tags[0]: a tag needs its address");
    EXPECT_EQ(mistakeInTags(R"({"name": "a", "register": "M_bit", "address": 1.10})"),
              "plant.json:2:56: tags[0].address: an address is a whole number or a text, as that "
              "of a bit: \"1.10\"");
    EXPECT_EQ(mistakeInTags(R"({"name": "a", "register": "T", "address": 200})"),
              "plant.json:2:52: tags[0].address: 200 is out of range: T goes from 0 to 127");
    EXPECT_EQ(mistakeInTags(R"({"name": "a", "register": "T", "address": 1, "scale": "2"})"),
              "plant.json:2:64: tags[0].scale: a number is needed");
    EXPECT_EQ(mistakeInTags(R"({"name": "a", "register": "T", "address": 1, "station": 248})"),
              "plant.json:2:66: tags[0].station: '248' is no station: 1 to 247, or 0 for a "
              "broadcast");
    EXPECT_EQ(mistakeInTags(R"({"name": "a", "register": "T", "address": 1, "count": 1.5})"),
              "plant.json:2:64: tags[0].count: a whole number is needed");
    EXPECT_EQ(mistakeInTags(R"({"name": 1, "register": "T", "address": 1})"),
              "plant.json:2:19: tags[0].name: a text is needed");
}

TEST_F(ProjectFile, ATagThatIsNotOfTheFileIsNamed)
{
    Project project;
    JsonTag tag;
    tag.texts[nameColumn] = "new";
    tag.texts[registerColumn] = "T";
    tag.texts[addressColumn] = "1";
    project.tags = {tag};
    EXPECT_EQ(tagsOf(library, project, "plant.json").at(0).address,
              (Address{1, "T", Width::word, 1, 1}));
    project.tags[0].texts[addressColumn] = "200";
    EXPECT_EQ(complaint([&] { tagsOf(library, project, "plant.json"); }),
              "tag 'new': address: 200 is out of range: T goes from 0 to 127");
}

TEST_F(ProjectFile, ATagFileLiesBesideIt)
{
    const std::string file = path("plant.json");
    put(file, R"({"version": 1, "tagFile": "tags.csv"})");
    put(path("tags.csv"), "name,register,address\na,T,7\n");
    const Project project = readProject(file);
    EXPECT_EQ(tagFileOf(project, file), path("tags.csv"));
    EXPECT_EQ(tagsOf(library, project, file).at(0).address.first, 7);
    EXPECT_EQ(toText(project), "{\n  \"version\": 1,\n  \"tagFile\": \"tags.csv\"\n}\n");
    put(path("tags.csv"), "name,register,address\na,T,700\n");
    EXPECT_THAT(complaint([&] { tagsOf(library, project, file); }),
                StartsWith(path("tags.csv") + ":2: column 3 (address): "));
}

TEST_F(ProjectFile, StandsForATagFile)
{
    const std::string file = path("plant.json");
    put(file, everything);
    EXPECT_EQ(readTags(library, file).size(), 2u);
    put(file, "{\"version\": 1}");
    EXPECT_EQ(complaint([&] { readTags(library, file); }), file + ":1:1: there are no tags in it");
    put(file, R"({"version": 1, "tags": [{"name": "a", "scal": 1}]})");
    EXPECT_THAT(complaint([&] { readTags(library, file); }),
                StartsWith(file + ":1:47: tags[0].scal: no member of a tag"));
}

TEST_F(ProjectFile, ThatIsNewerIsRemarkedWhereItStandsForATagFile)
{
    const std::string file = path("newer.json");
    std::vector<std::string> remarks;
    const auto remark = [&remarks](const std::string& sentence) { remarks.push_back(sentence); };
    const std::string tags =
        R"("tags": [{"name": "a", "register": "R_W", "address": 5, "byteSwap": true}])";
    put(file, R"({"version": 9, )" + tags + "}");
    EXPECT_EQ(readTags(library, file, remark).size(), 1u);
    EXPECT_THAT(remarks,
                ::testing::ElementsAre(file + " is a newer program's, of version 9: what is not "
                                              "known to version 1 counts for nothing"));
    EXPECT_EQ(readTags(library, file).size(), 1u);
}

TEST_F(ProjectFile, HoldsTheNewOneOrTheOldOne)
{
    const std::string file = path("plant.json");
    writeProject(file, parsed(everything));
    EXPECT_EQ(contentOf(file, file), everything);

    Project unreadable;
    unreadable.line.retries = 0;
    EXPECT_EQ(complaint([&] { writeProject(file, unreadable); }),
              "the project:4:16: line.retries: a whole number from 1 to 1000 is needed");
    unreadable = Project();
    unreadable.tagFile = "\xFF";
    EXPECT_THAT(complaint([&] { writeProject(file, unreadable); }),
                StartsWith("the project cannot be written: "));
    JsonTag tag;
    tag.texts[nameColumn] = "a";
    tag.texts[decimalsColumn] = "1.5";
    unreadable = Project();
    unreadable.tags = {tag};
    EXPECT_EQ(complaint([&] { writeProject(file, unreadable); }),
              "'1.5': a whole number is needed");
    EXPECT_EQ(contentOf(file, file), everything);
    EXPECT_THAT(complaint([&] { writeProject("/no/such/folder/a.json", Project()); }),
                StartsWith("cannot write /no/such/folder/a.json: "));
    // Nothing is left beside it.
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

TEST_F(ProjectFile, OneThatCannotBeReadIsSaid)
{
    EXPECT_EQ(complaint([] { readProject("/no/such/file"); }),
              "cannot read the project /no/such/file: No such file or directory");
}

TEST(LineMembers, HaveTextsAndAreCopied)
{
    LineSetup from;
    from.port = "/dev/ttyS0";
    from.mayMark = false;
    from.timeoutMs = 300;
    from.horizonSeconds = 1.5;
    from.retries = 7;
    const std::vector<std::pair<const char*, const char*>> texts = {{"port", "/dev/ttyS0"},
                                                                    {"no-function-8", "true"},
                                                                    {"timeout", "300"},
                                                                    {"horizon", "1.5"},
                                                                    {"retries", "7"}};
    LineSetup to;
    for (const auto& [name, text] : texts) {
        EXPECT_TRUE(isDefault(lineMember(name), to)) << name;
        copyMember(lineMember(name), from, to);
        EXPECT_FALSE(isDefault(lineMember(name), to)) << name;
        EXPECT_EQ(memberText(lineMember(name), to), text);
    }
}

} // namespace

} // namespace dov417
