#include "tool/demo_round.h"

#include <utility>

namespace dov417 {

namespace {

struct Sample {
    const char* address;
    int factor; // the values change from round to round
};

const Sample samples[] = {{"1/I_bit:9.0", 1},
                          {"1/Q_bit:10.4", 1},
                          {"1/M_bit:1.0..1.3", 1},
                          {"1/R_bit:100.1", 1},
                          {"1/I_W:10", 3},
                          {"1/Q_W:9", 5},
                          {"1/M_W:8..9", 7},
                          {"1/R_W:110..112", 11},
                          {"1/R_D:120..123", 70001},
                          {"1/T:100", 13},
                          {"1/C:100", 17},
                          {"2/M_bit:1.2", 1},
                          {"2/R_bit:100.0..100.3", 1},
                          {"2/M_W:8", 19},
                          {"2/R_D:120..121", 90001}};

const Sample recipeSamples[] = {{"1/R_W:300..319", 23},
                                {"1/M_W:20..27", 29},
                                {"2/R_D:300..307", 110017},
                                {"2/M_bit:30.0..30.7", 1}};

// Values of the sample in this round, never the same in two rounds.
std::vector<std::string> valuesOf(const Address& address, int factor, int round)
{
    std::vector<std::string> values;
    for (int i = 0; i < valueCount(address); ++i) {
        const long long value = static_cast<long long>(factor) * (round + 1) + i;
        values.push_back(std::to_string(address.width == Width::bit    ? (round + i + 1) % 2
                                        : address.width == Width::word ? value % 60000
                                                                       : value % 4000000000));
    }
    return values;
}

Item itemOf(const Library& library, const Sample& sample)
{
    Item item;
    item.name = sample.address;
    item.address = parseAddress(library, sample.address);
    return item;
}

std::vector<unsigned char> bytesOf(const Item& item, int factor, int round)
{
    return valueBytes(item.address.width, item.format, valuesOf(item.address, factor, round));
}

// Each sample with its values of this round.
template <typename Entry, typename Samples>
std::vector<Entry> madeOf(const Samples& all, const Library& library, int round)
{
    std::vector<Entry> made;
    for (const Sample& sample : all) {
        Entry entry;
        entry.item = itemOf(library, sample);
        entry.data = bytesOf(entry.item, sample.factor, round);
        made.push_back(entry);
    }
    return made;
}

} // namespace

DemoRound::DemoRound(const Library& library, Session& session, std::function<void()> done)
    : library_(library), done_(std::move(done)), writeJob_(session, [this]() { writesDone(); }),
      recipeJob_(session, [this]() { recipeDone(); })
{
}

bool DemoRound::isUnderWay() const
{
    return stage_ != Stage::pause;
}

int DemoRound::completed() const
{
    return completed_;
}

const std::vector<std::string>& DemoRound::problems() const
{
    return problems_;
}

std::string DemoRound::status() const
{
    return "writes: " + std::to_string(confirmed_) +
           " read back; recipe: " + std::to_string(recipeWords_) +
           " words down, up and compared; " + std::to_string(completed_) + " rounds, " +
           std::to_string(problems_.size()) + " problems";
}

void DemoRound::start()
{
    stage_ = Stage::writes;
    writeJob_.start(madeOf<WriteTask>(samples, library_, completed_));
}

void DemoRound::writesDone()
{
    for (const WriteTask& task : writeJob_.tasks()) {
        if (task.result == WriteResult::confirmed)
            ++confirmed_;
        else
            problems_.push_back(task.item.name + ": written value was not read back" +
                                (task.reason.empty() ? "" : ": " + task.reason));
    }
    stage_ = Stage::download;
    sentRecipe_ = madeOf<RecipeEntry>(recipeSamples, library_, completed_);
    recipeJob_.download(sentRecipe_);
}

void DemoRound::recipeDone()
{
    for (const std::string& problem : recipeJob_.problems())
        problems_.push_back("recipe: " + problem);
    if (stage_ == Stage::download && recipeJob_.problems().empty()) {
        stage_ = Stage::upload;
        std::vector<RecipeEntry> empty = sentRecipe_;
        for (RecipeEntry& entry : empty)
            entry.data.clear();
        recipeJob_.upload(empty);
        return;
    }
    if (stage_ == Stage::upload && recipeJob_.problems().empty())
        compareRecipes();
    stage_ = Stage::pause;
    ++completed_;
    done_();
}

void DemoRound::compareRecipes()
{
    for (std::size_t i = 0; i < sentRecipe_.size(); ++i) {
        const RecipeEntry& sent = sentRecipe_.at(i);
        if (recipeJob_.entries().at(i).data != sent.data)
            problems_.push_back("recipe: " + sent.item.name + " came back different");
        else
            recipeWords_ += wordsOf(sent.item.address).length;
    }
}

} // namespace dov417
