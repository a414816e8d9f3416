#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QShortcut>
#include <QVBoxLayout>

#include "panel/desk/column_widths.h"
#include "panel/desk/flow_layout.h"
#include "panel/desk/row_table.h"
#include "panel/desk/value_delegate.h"
#include "panel/recipes/recipes_page.h"

namespace dov417 {

void RecipesPage::makeTable()
{
    filter_.setSourceModel(&model_);
    table_->setModel(&filter_);
    table_->setObjectName(QStringLiteral("recipe"));
    table_->setAccessibleName(tr("The recipe, value by value"));
    showRows(*table_, roomInEditedRow);
    table_->setAlternatingRowColors(true);
    table_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    table_->setItemDelegateForColumn(RecipeModel::buffer, new ValueDelegate(table_));
    fillWithLast(*table_->horizontalHeader());
    // Name, address, controller, age, file, buffer, comparison.
    setColumnLetters(*table_, {22, 15, 20, 12, 16, 16, 27});
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this]() { showState(); });
    auto* const remove =
        new QShortcut(QKeySequence::Delete, table_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(remove, &QShortcut::activated, this, [this]() { takeOut(); });
}

QWidget* RecipesPage::makeMoves()
{
    auto* const moves = new QWidget;
    auto* const row = new FlowLayout(moves);
    for (const auto& [button, name, tip] :
         {std::tuple{load_, "load", tr("From a file into the buffer")},
          std::tuple{save_, "save", tr("From the buffer into a file")},
          std::tuple{read_, "read", tr("Ask the controller for every value; the buffer stays")},
          std::tuple{upload_, "upload", tr("From the controller into the buffer")},
          std::tuple{download_, "download",
                     tr("From the buffer into the controller; then it is read back")}}) {
        button->setObjectName(QLatin1String(name));
        button->setToolTip(tip);
    }
    auto* const fromFile = new QLabel(tr("File \u21c4 buffer:"));
    auto* const fromController = new QLabel(tr("Controller \u21c4 buffer:"));
    row->addWidget(sideBySide({fromFile, load_, save_}));
    row->addWidget(sideBySide({fromController, upload_, download_, read_}));
    connect(load_, &QPushButton::clicked, this, [this]() { chooseFile(); });
    connect(save_, &QPushButton::clicked, this, [this]() { chooseFileToSave(); });
    connect(read_, &QPushButton::clicked, this, [this]() { move(RecipeKind::read); });
    connect(upload_, &QPushButton::clicked, this, [this]() { move(RecipeKind::upload); });
    connect(download_, &QPushButton::clicked, this, [this]() { move(RecipeKind::download); });
    return moves;
}

QWidget* RecipesPage::makeTools()
{
    auto* const tools = new QWidget;
    auto* const row = new QHBoxLayout(tools);
    row->setContentsMargins(0, 0, 0, 0);
    auto* const search = new QLineEdit;
    search->setPlaceholderText(tr("Show only names and addresses with \u2026"));
    search->setAccessibleName(tr("Show only rows with this text"));
    search->setObjectName(QStringLiteral("recipeSearch"));
    search->setClearButtonEnabled(true);
    auto* const different = new QCheckBox(tr("differences &only"));
    different->setObjectName(QStringLiteral("differentOnly"));
    takeOut_->setObjectName(QStringLiteral("takeOut"));
    takeOut_->setToolTip(tr("The values that are chosen are no part of the recipe then"));
    row->addWidget(search, 1);
    row->addWidget(different);
    row->addWidget(takeOut_);
    connect(search, &QLineEdit::textChanged, &filter_, &RecipeFilter::setText);
    connect(different, &QCheckBox::toggled, &filter_, &RecipeFilter::setDifferentOnly);
    connect(takeOut_, &QPushButton::clicked, this, [this]() { takeOut(); });
    return tools;
}

} // namespace dov417
