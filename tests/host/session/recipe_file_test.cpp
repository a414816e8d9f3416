#include "session/recipe_file.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

#include <QTemporaryDir>

#include "loaded_library.h"

namespace dov417 {

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

class RecipeFile : public LoadedLibrary {
protected:
    RecipeFile()
    {
        std::ofstream(path("tags.csv")) << "name,register,address,count,format\n"
                                           "speed,R_W,200,1,\n"
                                           "level,R_D,300,1,float\n"
                                           "code,R_W,310,1,bcd\n"
                                           "run,M_bit,1.5,3,\n"
                                           "mask,R_W,330,1,hex\n"
                                           "masks,R_D,340,2,hex\n"
                                           "flags,R_W,350,1,binary\n"
                                           "label,R_W,320,4,text\n";
        options.tags = path("tags.csv");
    }

    std::string path(const std::string& name) const
    {
        return folder.filePath(QString::fromStdString(name)).toStdString();
    }
    RecipeEntry entry(const std::string& name, const std::vector<unsigned char>& data) const
    {
        return {Items(library, options).find(name, Access::read), data};
    }
    std::string written(const std::vector<RecipeEntry>& entries) const
    {
        writeRecipe(path("recipe.json"), entries);
        return content("recipe.json");
    }
    std::string content(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream(path(name)).rdbuf();
        return text.str();
    }
    std::vector<RecipeEntry> readBack() const
    {
        return readRecipe(path("recipe.json"), Items(library, options));
    }
    std::string mistakeIn(const std::string& json) const
    {
        std::ofstream(path("recipe.json")) << json;
        return complaint([&] { readBack(); });
    }

    QTemporaryDir folder;
    ItemSource options;
};

TEST_F(RecipeFile, HoldsNamesAndValues)
{
    EXPECT_EQ(written({entry("speed", {0xDC, 0x05}), entry("run", {1, 0, 1})}),
              "{\n  \"speed\": 1500,\n  \"run\": [\n    1,\n    0,\n    1\n  ]\n}\n");
    EXPECT_EQ(readBack().at(1).data, (std::vector<unsigned char>{1, 0, 1}));
}

TEST_F(RecipeFile, WhatIsNoNumberOfItsFormatComesBackBitByBit)
{
    const std::vector<unsigned char> notANumber = {0x01, 0x00, 0xC0, 0x7F};
    const std::vector<unsigned char> infinity = {0x00, 0x00, 0x80, 0xFF};
    const std::vector<unsigned char> noDigits = {0xCD, 0xAB};
    const std::string text = written({entry("level", notANumber), entry("code", noDigits)});
    EXPECT_THAT(text, HasSubstr("\"level\": \"0x7FC00001\""));
    EXPECT_THAT(text, HasSubstr("\"code\": \"0xABCD\""));
    EXPECT_EQ(readBack().at(0).data, notANumber);
    EXPECT_EQ(readBack().at(1).data, noDigits);
    written({entry("level", infinity)});
    EXPECT_EQ(readBack().at(0).data, infinity);
}

TEST_F(RecipeFile, HasATextAsItIsWhateverItLooksLike)
{
    const std::vector<std::vector<unsigned char>> labels = {
        {'x', '0', '1', '4', 0, 0, 0, 0}, {'2', '1', 0, 0, 0, 0, 0, 0}, {7, '"', 0, 0, 0, 0, 0, 0}};
    const std::vector<std::string> texts = {R"("0x41")", R"("12")", R"("\\\"\\x07")"};
    for (std::size_t i = 0; i < labels.size(); ++i) {
        EXPECT_EQ(written({entry("label", labels.at(i))}),
                  "{\n  \"label\": " + texts.at(i) + "\n}\n");
        EXPECT_EQ(readBack().at(0).data, labels.at(i));
    }
    EXPECT_THAT(mistakeIn("{\"label\": 12}"), HasSubstr("label: a text is written in quotes"));
    EXPECT_THAT(mistakeIn("{\"label\": \"more than 8\"}"),
                HasSubstr("label: text 'more than 8': 11 characters, and there is room for 8"));
}

TEST_F(RecipeFile, HasDecimalNumbersWhateverTheFormat)
{
    const auto dataOf = [&](const std::string& json) {
        std::ofstream(path("recipe.json")) << json;
        return readBack().at(0).data;
    };
    using Bytes = std::vector<unsigned char>;
    EXPECT_EQ(dataOf("{\"mask\": 10}"), (Bytes{10, 0}));
    EXPECT_EQ(dataOf("{\"masks\": [10, 65536]}"), (Bytes{10, 0, 0, 0, 0, 0, 1, 0}));
    EXPECT_EQ(dataOf("{\"flags\": 10}"), (Bytes{10, 0}));
    EXPECT_EQ(dataOf("{\"code\": 10}"), (Bytes{0x10, 0}));
    EXPECT_EQ(dataOf("{\"mask\": \"10\"}"), (Bytes{16, 0})) << "a text is read as typed";
    EXPECT_EQ(dataOf("{\"mask\": \"0x0F0F\"}"), (Bytes{0x0F, 0x0F}));
    EXPECT_EQ(dataOf("{\"flags\": \"10\"}"), (Bytes{2, 0}));
    EXPECT_EQ(dataOf("{\"masks\": [\"10\", 10]}"), (Bytes{16, 0, 0, 0, 10, 0, 0, 0}));
    EXPECT_THAT(mistakeIn("{\"mask\": 65536}"), HasSubstr("out of range"));
    EXPECT_THAT(mistakeIn("{\"mask\": 1.5}"), HasSubstr("not a whole number"));
    EXPECT_THAT(mistakeIn("{\"mask\": -1}"), HasSubstr("out of range"));
    for (const char* name : {"mask", "flags"}) {
        const std::vector<unsigned char> ten = {10, 0};
        written({entry(name, ten)});
        EXPECT_EQ(readBack().at(0).data, ten) << name;
    }
}

TEST_F(RecipeFile, NamesTheTagOfAMistake)
{
    EXPECT_THAT(mistakeIn("{\"speed\": 65536}"), HasSubstr("recipe.json: speed: value '65536'"));
    EXPECT_THAT(mistakeIn("{\"speed\": [1, 2]}"), HasSubstr("speed: 1 value is needed, 2 given"));
    EXPECT_THAT(mistakeIn("{\"run\": 1}"), HasSubstr("run: 3 values are needed, 1 given"));
    EXPECT_THAT(mistakeIn("{\"speed\": null}"), HasSubstr("speed: a value is a number or a text"));
    EXPECT_THAT(mistakeIn("{\"speed\": 1,\n\"speed\": 2}"),
                HasSubstr("recipe.json:2:1: speed: is there twice"));
    EXPECT_THAT(mistakeIn("[1]"), HasSubstr("a recipe is an object of tag names and values"));
}

TEST_F(RecipeFile, WantsOneThingOfEachPlace)
{
    EXPECT_THAT(mistakeIn(R"({"speed": 4, "1/R_W:200": 9})"),
                EndsWith("recipe.json: speed and 1/R_W:200 want different values of the same "
                         "place, 1/R_W:200"));
    EXPECT_THAT(mistakeIn(R"({"run": [1, 0, 1], "M_W:1": 0})"), EndsWith("same place, 1/M_W:1"));
    EXPECT_THAT(mistakeIn(R"({"masks": [0, 65536], "R_W:343": 2})"),
                EndsWith("same place, 1/R_W:343"));
    std::ofstream(path("recipe.json"))
        << R"({"masks": [0, 65536], "R_W:343": 1, "2/R_W:343": 2, "R_bit:343.0": 1,)"
        << R"("R_bit:343.1": 0, "R_W:43": 4, "M_W:43": 5})";
    EXPECT_EQ(readBack().size(), 7U) << "alike, or elsewhere";
}

TEST_F(RecipeFile, ThatIsEmptyIsNoRecipe)
{
    EXPECT_THAT(mistakeIn(""), HasSubstr("recipe.json:1:1: "));
    EXPECT_THAT(mistakeIn(""), HasSubstr("unexpected end of input"));
}

TEST_F(RecipeFile, ThatIsAFolderCannotBeRead)
{
    std::filesystem::create_directory(path("recipe.json"));
    EXPECT_EQ(complaint([&] { readBack(); }),
              "cannot read " + path("recipe.json") + ": Is a directory");
}

TEST_F(RecipeFile, IsReplacedBehindItsLinkAndKeepsItsMode)
{
    std::ofstream(path("real.json")) << "old";
    std::filesystem::permissions(path("real.json"), std::filesystem::perms(0600));
    std::filesystem::create_symlink("real.json", path("recipe.json"));
    const std::string text = written({entry("speed", {1, 0})});
    EXPECT_TRUE(std::filesystem::is_symlink(path("recipe.json")));
    EXPECT_EQ(content("real.json"), text);
    EXPECT_EQ(std::filesystem::status(path("real.json")).permissions(),
              std::filesystem::perms(0600));
}

TEST_F(RecipeFile, WritesIntoAPipeInsteadOfReplacingIt)
{
    const std::string pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::fstream reader(pipe, std::ios::in | std::ios::out); // both ends, so that nobody waits
    writeRecipe(pipe, {entry("speed", {1, 0})});
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    std::string line;
    std::getline(reader, line);
    EXPECT_EQ(line, "{");
}

TEST_F(RecipeFile, OnAFullDeviceIsAFailure)
{
    std::filesystem::create_symlink("/dev/full", path("full"));
    EXPECT_THAT(complaint([&] {
                    writeRecipe(path("full"), {entry("speed", {1, 0})});
                }),
                HasSubstr("cannot write " + path("full") + ": No space left on device"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

} // namespace

} // namespace dov417
