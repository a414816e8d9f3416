#include "panel/desk/value_delegate.h"

#include <QLineEdit>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

namespace dov417 {

namespace {

// Of a table of one cell, which holds more than it shows.
class AFieldOfAValue : public testing::Test {
protected:
    AFieldOfAValue()
    {
        model.appendRow(new QStandardItem(QStringLiteral("12.3")));
        QObject::connect(&model, &QAbstractItemModel::dataChanged, &model, [this]() { ++sets; });
        field.reset(static_cast<QLineEdit*>(
            delegate.createEditor(nullptr, QStyleOptionViewItem(), cell())));
        delegate.setEditorData(field.get(), cell());
    }
    QModelIndex cell() const
    {
        return model.index(0, 0);
    }
    void enter()
    {
        delegate.setModelData(field.get(), &model, cell());
    }

    QStandardItemModel model;
    ValueDelegate delegate;
    std::unique_ptr<QLineEdit> field;
    int sets = 0;
};

TEST_F(AFieldOfAValue, GivesNothingBackWhereNobodyTyped)
{
    EXPECT_EQ(field->text(), "12.3");
    enter();
    EXPECT_EQ(sets, 0);
    QTest::keyClick(field.get(), Qt::Key_End);
    enter();
    EXPECT_EQ(sets, 0);
}

TEST_F(AFieldOfAValue, GivesBackWhatWasTyped)
{
    QTest::keyClicks(field.get(), "7");
    enter();
    EXPECT_EQ(sets, 1);
    EXPECT_EQ(cell().data().toString(), "7");
}

} // namespace

} // namespace dov417
