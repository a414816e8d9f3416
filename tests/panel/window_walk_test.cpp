// Every page of the window, as those see it who use keys, a screen reader, dark colours or another
// language. Nothing here knows a page: what is added to the window is looked at, too.
#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTranslator>
#include <set>

#include "project_world.h"

namespace dov417 {

namespace {

const QString beginMark = QStringLiteral("\u27e6");
const QString endMark = QStringLiteral("\u27e7");

// Each text half as long again, and told from one that was never translated.
class MadeUpLanguage : public QTranslator {
public:
    using QTranslator::QTranslator;

    QString translate(const char* context, const char* text, const char* /*disambiguation*/,
                      int /*number*/) const override
    {
        const QString source = QString::fromUtf8(text);
        if (QByteArray(context).startsWith("Q") || source.isEmpty())
            return source; // Qt's own
        // In words, as people write: only between them can a text go on in the next line.
        QString more(source.size() / 2, QLatin1Char('o'));
        for (int i = 12; i < more.size() - 1; i += 12)
            more[i] = QLatin1Char(' ');
        return beginMark + source + more + endMark;
    }
    bool isEmpty() const override
    {
        return false;
    }
};

std::string nameOf(const QWidget& widget)
{
    std::string name;
    for (const QWidget* each = &widget; each && !each->isWindow(); each = each->parentWidget())
        name = (each->objectName().isEmpty() ? each->metaObject()->className()
                                             : each->objectName().toStdString()) +
               (name.empty() ? "" : "/" + name);
    return name;
}

// Made by Qt within another one, for which that speaks.
bool isInnerPart(const QWidget& widget)
{
    const QWidget* const parent = widget.parentWidget();
    return qobject_cast<const QAbstractSpinBox*>(parent) ||
           qobject_cast<const QComboBox*>(parent) || qobject_cast<const QLineEdit*>(parent) ||
           widget.inherits("QTableCornerButton") || widget.inherits("QHeaderView") ||
           widget.inherits("QScrollBar") || widget.inherits("QMenuBarExtension") ||
           widget.objectName().startsWith(QLatin1String("qt_"));
}

// Of a form, or a buddy's.
bool hasLabel(QWidget* widget)
{
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(widget);
    return told && !told->relations(QAccessible::Label).isEmpty();
}

class TheWholeWindow : public ProjectWorld {
protected:
    int pageCount() const
    {
        return static_cast<int>(window.pages().size());
    }
    // In sight, of the page that is shown and of what stands around it.
    template <typename Widget = QWidget>
    static std::vector<Widget*> inSight(const QWidget& where)
    {
        std::vector<Widget*> widgets;
        for (Widget* const each : where.findChildren<Widget*>())
            if (each->isVisibleTo(&where) && !isInnerPart(*each) && each->window() == &where)
                widgets.push_back(each);
        return widgets;
    }
    static std::vector<QWidget*> reachable(const QWidget& where)
    {
        std::vector<QWidget*> widgets = inSight(where);
        widgets.erase(std::remove_if(widgets.begin(), widgets.end(),
                                     [](const QWidget* each) {
                                         return !each->isEnabled() ||
                                                (each->focusPolicy() & Qt::TabFocus) == 0;
                                     }),
                      widgets.end());
        return widgets;
    }
    void showAll(const std::function<void(QWidget&)>& look, QWidget& where)
    {
        for (int page = 0; page < pageCount(); ++page) {
            window.showPage(page);
            QCoreApplication::processEvents();
            look(where);
        }
    }
    void showTrial()
    {
        QTest::mouseClick(window.findChild<QPushButton*>("trial"), Qt::LeftButton);
        EXPECT_TRUE(waitUntil([this]() { return allAre(ValueState::good); }));
    }
};

TEST_F(TheWholeWindow, HasANameForEverythingThatIsReachedWithKeys)
{
    showTrial();
    showAll(
        [](const QWidget& where) {
            for (QWidget* const each : reachable(where)) {
                const auto* const button = qobject_cast<const QAbstractButton*>(each);
                EXPECT_TRUE(!each->accessibleName().isEmpty() || hasLabel(each) ||
                            (button && !button->text().isEmpty()))
                    << nameOf(*each);
            }
        },
        window);
}

TEST_F(TheWholeWindow, IsReachedWithTheTabKeyEverywhere)
{
    constexpr int maxSteps = 150; // a table of values has more cells
    showTrial();
    showAll(
        [](QWidget& where) {
            std::set<QWidget*> missing;
            for (QWidget* const each : reachable(where))
                missing.insert(each);
            ASSERT_FALSE(missing.empty());
            (*missing.begin())->setFocus(Qt::TabFocusReason);
            for (int step = 0; step < maxSteps && !missing.empty(); ++step) {
                QWidget* const focused = QApplication::focusWidget();
                ASSERT_TRUE(focused);
                for (QWidget* each = focused; each; each = each->parentWidget())
                    missing.erase(each->focusProxy() ? each->focusProxy() : each);
                QTest::keyClick(focused, Qt::Key_Tab);
            }
            for (const QWidget* const each : missing)
                ADD_FAILURE() << "the Tab key never comes to " << nameOf(*each);
        },
        window);
}

// A colour that is set on a widget, and no other one beside it, is lost on dark ground.
TEST_F(TheWholeWindow, FollowsThePalette)
{
    showTrial();
    showAll(
        [](const QWidget& where) {
            for (const QWidget* const each : inSight(where))
                EXPECT_EQ(each->styleSheet(), QString()) << nameOf(*each);
            for (const QLabel* const each : inSight<QLabel>(where))
                EXPECT_EQ(each->palette().color(QPalette::WindowText),
                          QApplication::palette(each).color(QPalette::WindowText))
                    << nameOf(*each);
        },
        window);
}

class InstalledLanguage {
protected:
    InstalledLanguage()
    {
        QCoreApplication::installTranslator(&language_);
    }
    ~InstalledLanguage()
    {
        QCoreApplication::removeTranslator(&language_);
    }

private:
    MadeUpLanguage language_;
};

// The language is there before the window is.
class TheTranslatedWindow : private InstalledLanguage, public TheWholeWindow {};

// Numbers, symbols, addresses and what the machine is called are no language.
bool isLanguage(const QString& text)
{
    static const QRegularExpression word(QStringLiteral("[a-z]{3,} [a-z]|^[A-Z][a-z]{3,}"));
    return word.match(text).hasMatch();
}

void expectTranslated(const QString& text, const QWidget& widget, const char* what)
{
    EXPECT_TRUE(!isLanguage(text) || text.contains(beginMark))
        << nameOf(widget) << ", " << what << ": " << text.toStdString();
}

TEST_F(TheTranslatedWindow, LeavesNoTextOut)
{
    const auto look = [](const QWidget& where) {
        for (const QWidget* const each : inSight(where)) {
            expectTranslated(each->toolTip(), *each, "tool tip");
            expectTranslated(each->accessibleName(), *each, "name");
            expectTranslated(each->accessibleDescription(), *each, "description");
        }
        for (const QLabel* const each : inSight<QLabel>(where))
            expectTranslated(each->text(), *each, "text");
        for (const QAbstractButton* const each : inSight<QAbstractButton>(where))
            expectTranslated(each->text(), *each, "text");
        for (const QGroupBox* const each : inSight<QGroupBox>(where))
            expectTranslated(each->title(), *each, "title");
        for (const QLineEdit* const each : inSight<QLineEdit>(where))
            expectTranslated(each->placeholderText(), *each, "hint");
        for (const QComboBox* const each : inSight<QComboBox>(where))
            for (int i = 0; i < each->count(); ++i)
                expectTranslated(each->itemText(i), *each, "choice");
        for (const QHeaderView* const each : where.findChildren<QHeaderView*>())
            for (int i = 0; each->isVisibleTo(&where) && each->orientation() == Qt::Horizontal &&
                            i < each->count();
                 ++i)
                expectTranslated(
                    each->model()->headerData(i, Qt::Horizontal, Qt::DisplayRole).toString(), *each,
                    "heading");
    };
    showAll(look, window);
    showTrial();
    showAll(look, window);
    for (const QAction* const action : window.findChildren<QAction*>())
        expectTranslated(action->text(), window, "action");
}

TEST_F(TheTranslatedWindow, CutsNothingOff)
{
    showTrial();
    const auto look = [](const QWidget& where) {
        EXPECT_LE(where.minimumSizeHint().width(), 1280);
        EXPECT_EQ(where.width(), 1280);
        EXPECT_EQ(where.height(), 800);
        for (const QLabel* const each : inSight<QLabel>(where)) {
            if (each->text().isEmpty())
                continue;
            const QSize needed = each->wordWrap() ? QSize(1, each->heightForWidth(each->width()))
                                                  : each->minimumSizeHint();
            EXPECT_LE(needed.width(), each->width()) << nameOf(*each);
            EXPECT_LE(needed.height(), each->height()) << nameOf(*each);
        }
        for (const QAbstractButton* const each : inSight<QAbstractButton>(where))
            EXPECT_LE(each->minimumSizeHint().width(), each->width())
                << nameOf(*each) << ": " << each->text().toStdString();
        for (const QComboBox* const each : inSight<QComboBox>(where))
            EXPECT_LE(each->fontMetrics().horizontalAdvance(each->currentText()), each->width())
                << nameOf(*each) << ": " << each->currentText().toStdString();
    };
    showAll(look, window);
}

} // namespace

} // namespace dov417
