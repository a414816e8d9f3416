// The page of recipes: values in controller, file and buffer, and moved between them.
#ifndef DOV417_PANEL_RECIPES_PAGE_H
#define DOV417_PANEL_RECIPES_PAGE_H

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <vector>

#include "panel/desk/panel_page.h"
#include "panel/recipes/recipe_change.h"
#include "panel/recipes/recipe_model.h"

namespace dov417 {

class RecipesPage : public PanelPage {
    Q_OBJECT

public:
    static constexpr int maxSteps = 100; // that are taken back

    explicit RecipesPage(PanelDesk& desk);

    QString title() const override;
    QIcon icon() const override;
    std::string settingsName() const override;
    OrderedJson settings() const override;
    std::function<void()> prepared(const OrderedJson& settings) override;
    bool settingsAreSteps() const override;
    QUndoStack* ownHistory() override;
    bool mayForget() override;
    bool hasUnsaved() const override;
    OrderedJson unsaved() const override;
    QString takeUpUnsaved(const OrderedJson& unsaved) override;

    // False where it cannot be had or is no recipe, which is told; nothing is different then.
    bool loadFile(const QString& file);
    bool saveFile(const QString& file);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void makeTable();
    QWidget* makeMoves();
    QWidget* makeTools();
    void setTags();
    void settleTags(); // before anything looks at the recipe
    void look();
    void takeOut();
    bool mayReplaceBuffer();
    // Does it, and makes a step of what it changes in the buffer.
    void change(const QString& what, const std::function<void()>& todo);
    void keepStep(const QString& what, const RecipeState& before, const RecipeState& after);
    void put(const std::vector<RecipeCell>& cells, const QString* file);
    // Steps may lead back to before the file was loaded, which is then not to be written over.
    bool isOfPath() const;
    void forgetRecipe();
    void beginProject();
    void readFile(const QString& file);
    void loadNamedFile();
    void noteFile(const QString& file); // its content is the buffer's
    bool saveInPath();
    void chooseFile();
    bool chooseFileToSave();
    void move(RecipeKind kind);
    bool mayDownload(int line, std::size_t values);
    void hear(const RecipeNews& news);
    void showProgress(const RecipeNews& news);
    void showEnd(const RecipeNews& news, bool isOfLine);
    void showState();

    RecipeTable recipe_;
    RecipeModel model_;
    RecipeFilter filter_;
    QTableView* const table_;
    QPushButton* const load_;
    QPushButton* const save_;
    QPushButton* const read_;
    QPushButton* const upload_;
    QPushButton* const download_;
    QPushButton* const takeOut_;
    QProgressBar* const progress_;
    QPushButton* const cancel_; // there while something is moved
    QLabel* const file_;
    QLabel* const result_;
    QString path_;         // of the file that was loaded or saved last
    QString bufferFile_;   // whose content the buffer was before it was edited
    std::string fileHash_; // of what stood in that of path_ then
    QString namedFile_;    // by a project; to be loaded
    QUndoStack history_;
    bool isChanging_ = false; // by change()
    QTimer lookTimer_;
    QTimer tagsTimer_;
    bool isStale_ = false; // other tags are watched than the recipe knows
    // Of the order under way.
    long long order_ = 0;
    int orderLine_ = 0;
    std::vector<RecipeShare> shares_;
};

} // namespace dov417

#endif
