// A recipe moved as a whole: the words by the driver's recipe transfer, the bits one by one.
//
// The driver keeps bit types of a recipe as bit types and frames them without their area's base
// address, or as a run of bits in one request. So only words go through its recipe transfer; bits
// are read with their words and written as single writes.
#ifndef DOV417_SESSION_RECIPE_JOB_H
#define DOV417_SESSION_RECIPE_JOB_H

#include <functional>
#include <string>
#include <vector>

#include "session/items.h"
#include "session/session.h"

namespace dov417 {

// One tag's values.
struct RecipeEntry {
    Item item;
    std::vector<unsigned char> data; // as intf_getData() and intf_setData() have them
};

// What the controller holds for one tag.
struct RecipeReading {
    std::vector<unsigned char> data;
    std::string problem;  // why it could not be read; empty if it was
    std::string why = {}; // the kind of the problem, as Result has it
};

// How far a transfer has come, also one that was cut off.
struct RecipeProgress {
    std::size_t words = 0;
    std::size_t allWords = 0;
    std::size_t bits = 0; // written one by one
    std::size_t allBits = 0;
};

// Must outlive what it has started.
class RecipeJob {
public:
    // done: what was asked for has ended; problems() tells how.
    RecipeJob(Session& session, std::function<void()> done);

    // Controller to entries.
    void upload(const std::vector<RecipeEntry>& entries);
    // Entries to controller.
    void download(const std::vector<RecipeEntry>& entries);
    // Reads what the controller holds for the entries of the download, or for these.
    void readBack();
    void readBack(const std::vector<RecipeEntry>& entries);

    const std::vector<RecipeEntry>& entries() const;
    // Empty: everything was transferred.
    const std::vector<std::string>& problems() const;
    // The kind of the first of them, as Result has it.
    const std::string& why() const;
    // Of readBack(), one for each entry.
    const std::vector<RecipeReading>& readings() const;
    RecipeProgress progress() const;

private:
    RecipeWords wordsOfEntries() const;
    void takeWords(const RecipeWords& words);
    void writeBits();
    void bitWritten(const std::string& name, const Result& result);
    void begin(const std::vector<RecipeEntry>& entries);
    void add(const std::string& problem, const std::string& why = std::string());

    Session& session_;
    std::function<void()> done_;
    std::vector<RecipeEntry> entries_;
    std::vector<std::string> problems_;
    std::string why_;
    RecipeLayout layout_;
    std::vector<RecipeReading> readings_;
    bool isDownload_ = false;
    std::size_t bitsUnderWay_ = 0;
    std::size_t bitsWritten_ = 0;
    int generation_ = 0; // of the session, at the start
};

} // namespace dov417

#endif
