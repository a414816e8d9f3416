// A recipe value by value: what the controller, the file and the buffer hold of it. Pure.
//
// The buffer is what is edited, saved and downloaded. What the controller holds was read at some
// time, and of a line that is not open any more it is not known.
#ifndef DOV417_PANEL_RECIPE_TABLE_H
#define DOV417_PANEL_RECIPE_TABLE_H

#include <QCoreApplication>
#include <QStringList>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "panel/desk/value_book.h"
#include "panel/recipes/recipe_copy.h"
#include "panel/recipes/recipe_rows.h"

namespace dov417 {

// Where a name means something else by now, what was edited for it has a row of its own, by the
// address that it was edited for.
struct RecipeTakenUp {
    std::vector<RecipeCell> cells;
    QStringList others;   // such names
    QStringList problems; // what could not be had back, and why
};

class RecipeTable {
    Q_DECLARE_TR_FUNCTIONS(RecipeTable)

public:
    explicit RecipeTable(const Library& library);

    // What is known of values that stay, by name and address, is kept. Of those that are watched
    // no more, what file and buffer hold is there again once they are watched again.
    void setTags(const PanelTags& tags);
    // No file, no buffer.
    void clear();
    // Other lines have other controllers.
    void forgetController();
    // What polling has brought since.
    void look(const ValueBook& book);
    // Replies may have come twice: what was uploaded or read from this line may be another
    // address's.
    void doubt();
    // Does the buffer hold what may be another address's?
    bool isDoubtful(const RecipeRow& row) const;

    const std::vector<RecipeRow>& rows() const
    {
        return rows_;
    }

    // File and buffer are the file's then. Throws a UsageFailure that names the first mistake, and
    // nothing is different. Returns how many values cannot be written and stay out of the buffer.
    // What lies outside its limits is there all the same: a copy of a controller that holds such a
    // value is to be had again.
    std::size_t load(const std::string& file);
    // What nobody watches any more is in it, too, by its address. Throws a UsageFailure where two
    // values of one name would be one in the file or one is in doubt, and a Failure where it cannot
    // be written.
    void save(const std::string& file);
    // As it is typed; empty takes it out of the recipe. Throws a UsageFailure.
    void edit(std::size_t row, const std::string& text);
    // A file or a buffer, be it of values that nobody watches now.
    bool isAny() const;
    // The buffer is not what the file holds.
    bool isChanged() const;
    // Of what is in the recipe, watched or not.
    std::vector<RecipeCell> buffer() const;
    RecipeCell cellOf(std::size_t row) const;
    // Those of the buffer are so again. A value that nobody watches has its row again, or none
    // where neither file nor buffer have it.
    void put(const std::vector<RecipeCell>& cells);
    // For a program that ends, and what the next one makes the buffer of. It is to put the cells.
    std::vector<RecipeCopyValue> bufferToKeep() const;
    RecipeTakenUp takenUp(const std::vector<RecipeCopyValue>& values) const;
    std::size_t valuesInRecipe() const;
    // Besides; they are saved and not downloaded.
    std::size_t unwatchedInRecipe() const;
    // Those that lie outside their limits, and are not downloaded.
    std::size_t valuesOutside() const;

    // What an order is about. Throws a UsageFailure where there is nothing to move, and for a
    // download where two values want different things of the same place, or one lies outside its
    // limits or is in doubt.
    std::vector<RecipeShare> shares(RecipeKind kind) const;
    void began(const std::vector<RecipeShare>& shares, RecipeKind kind);
    // isOfLine: the line is still the one that it was ordered for.
    void ended(const std::vector<RecipeShare>& shares, const RecipeNews& news, bool isOfLine);

private:
    Item find(const std::string& name) const;
    std::size_t placeOf(const Address& address, const std::string& itemName) const;
    void addRow(const PanelValue& value);
    RecipeRow* find(const RecipeKey& key);
    // One address may be watched twice: takes the first row of the key that is not taken yet, or
    // the first of this format.
    using TakenRows = std::vector<bool>;
    RecipeRow* take(const RecipeKey& key, TakenRows& taken, const Format* format = nullptr);
    RecipeRow* findParked(const RecipeKey& key);
    void markDoubt(RecipeRow& row) const;
    static constexpr int keptInDoubt = -1; // the upload of what was in doubt when it was kept
    static std::string doubtText();
    void requireNoDoubt() const;
    std::vector<RecipeRow> rowsToSave() const;
    void dropEmptyRows();

    const Library& library_;
    std::vector<RecipeRow> rows_;
    std::unordered_multimap<Address, std::size_t, AddressHash> places_; // of the rows
    std::vector<RecipeRow> parked_; // of which nobody watches the value now
    int uploads_ = 0;
    int uploadsBefore_ = 0; // from other lines
    std::set<int> doubted_{keptInDoubt};
};

// In the value's format, with its unit; empty of no bytes.
std::string recipeText(const RecipeRow& row, const ValueBytes& bytes);

} // namespace dov417

#endif
