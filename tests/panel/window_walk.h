// Looks at all that stands in a window, as those see it who use keys, a screen reader, other
// colours or another language.
#ifndef DOV417_TESTS_WINDOW_WALK_H
#define DOV417_TESTS_WINDOW_WALK_H

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStyleOptionComboBox>
#include <QTest>
#include <QTranslator>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "panel/pictures.h"

namespace dov417 {

inline const QString beginMark = QStringLiteral("\u27e6");
inline const QString endMark = QStringLiteral("\u27e7");

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

inline std::string nameOf(const QWidget& widget)
{
    std::string name;
    for (const QWidget* each = &widget; each && !each->isWindow(); each = each->parentWidget())
        name = (each->objectName().isEmpty() ? each->metaObject()->className()
                                             : each->objectName().toStdString()) +
               (name.empty() ? "" : "/" + name);
    return name;
}

// Made by Qt within another one, for which that speaks.
inline bool isInnerPart(const QWidget& widget)
{
    const QWidget* const parent = widget.parentWidget();
    return qobject_cast<const QAbstractSpinBox*>(parent) ||
           qobject_cast<const QComboBox*>(parent) || qobject_cast<const QLineEdit*>(parent) ||
           widget.inherits("QTableCornerButton") || widget.inherits("QHeaderView") ||
           widget.inherits("QScrollBar") || widget.inherits("QMenuBarExtension") ||
           widget.objectName().startsWith(QLatin1String("qt_"));
}

// Of a form, or a buddy's.
inline bool hasLabel(QWidget* widget)
{
    QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(widget);
    return told && !told->relations(QAccessible::Label).isEmpty();
}

// In sight, of the page that is shown and of what stands around it.
template <typename Widget = QWidget>
std::vector<Widget*> inSight(const QWidget& where)
{
    std::vector<Widget*> widgets;
    for (Widget* const each : where.findChildren<Widget*>())
        if (each->isVisibleTo(&where) && !isInnerPart(*each) && each->window() == &where)
            widgets.push_back(each);
    return widgets;
}
inline std::vector<QWidget*> reachable(const QWidget& where)
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

// The desktop's letters half as large again, before there is a window.
class LargeLetters {
protected:
    LargeLetters() : before_(QApplication::font())
    {
        QFont larger = before_;
        larger.setPointSizeF(before_.pointSizeF() * 1.5);
        QApplication::setFont(larger);
    }
    ~LargeLetters()
    {
        QApplication::setFont(before_);
    }

private:
    const QFont before_;
};

// Numbers, symbols, addresses and what the machine is called are no language.
inline bool isLanguage(const QString& text)
{
    static const QRegularExpression word(QStringLiteral("[a-z]{3,} [a-z]|^[A-Z][a-z]{3,}"));
    return word.match(text).hasMatch();
}

inline void expectTranslated(const QString& text, const QWidget& widget, const char* what)
{
    EXPECT_TRUE(!isLanguage(text) || text.contains(beginMark))
        << nameOf(widget) << ", " << what << ": " << text.toStdString();
}

// ---- what is expected of each window ------------------------------------------------------------

inline void expectNames(const QWidget& where)
{
    for (QWidget* const each : reachable(where)) {
        const auto* const button = qobject_cast<const QAbstractButton*>(each);
        EXPECT_TRUE(!each->accessibleName().isEmpty() || hasLabel(each) ||
                    (button && !button->text().isEmpty()))
            << nameOf(*each);
    }
}

inline void expectTabReachesAll(QWidget& where)
{
    constexpr int maxSteps = 1000; // it may begin in a table, whose cells come first
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
}

// Those that Qt brings with a dialog are in Qt's own language.
inline bool isQtsButton(const QAbstractButton& button)
{
    const auto* const box = qobject_cast<const QDialogButtonBox*>(button.parentWidget());
    return box &&
           box->standardButton(const_cast<QAbstractButton*>(&button)) != QDialogButtonBox::NoButton;
}

inline void expectNoTextLeftOut(const QWidget& where)
{
    for (const QWidget* const each : inSight(where)) {
        expectTranslated(each->toolTip(), *each, "tool tip");
        expectTranslated(each->accessibleName(), *each, "name");
        expectTranslated(each->accessibleDescription(), *each, "description");
    }
    for (const QLabel* const each : inSight<QLabel>(where))
        if (each->objectName() != QLatin1String("brief")) // in dov417's words
            expectTranslated(each->text(), *each, "text");
    for (const QAbstractButton* const each : inSight<QAbstractButton>(where))
        if (!isQtsButton(*each))
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
}

inline void expectHeadsShown(const QWidget& where)
{
    for (const QHeaderView* const each : where.findChildren<QHeaderView*>())
        for (int i = 0; each->isVisibleTo(&where) && each->window() == &where &&
                        each->orientation() == Qt::Horizontal && i < each->count();
             ++i)
            EXPECT_TRUE(each->isSectionHidden(i) ||
                        each->sectionSizeHint(i) <= each->sectionSize(i))
                << nameOf(*each) << ": "
                << each->model()->headerData(i, Qt::Horizontal).toString().toStdString()
                << " needs " << each->sectionSizeHint(i) << " and has " << each->sectionSize(i);
}

// Whatever may be chosen there.
inline void expectChoicesShown(const QComboBox& combo)
{
    QStyleOptionComboBox option;
    option.initFrom(&combo);
    option.editable = combo.isEditable();
    option.frame = combo.hasFrame();
    const int room =
        combo.style()
            ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &combo)
            .width();
    // Qt's own idea of what it needs is a few pixels less.
    const bool hasWhatItAsksFor = combo.width() >= combo.sizeHint().width();
    for (int i = 0; i < combo.count(); ++i)
        EXPECT_TRUE(hasWhatItAsksFor ||
                    combo.fontMetrics().horizontalAdvance(combo.itemText(i)) <= room)
            << nameOf(combo) << ": " << combo.itemText(i).toStdString();
}

inline void expectNumberShown(const QAbstractSpinBox& box)
{
    constexpr int margins = 2 * 2; // of QLineEdit
    const auto* const field = box.findChild<QLineEdit*>();
    EXPECT_LE(box.fontMetrics().horizontalAdvance(field->text()) + margins, field->width())
        << nameOf(box) << ": " << field->text().toStdString();
    EXPECT_LE(box.fontMetrics().horizontalAdvance(box.specialValueText()) + margins, field->width())
        << nameOf(box) << ": " << box.specialValueText().toStdString();
}

inline void expectNothingCutOff(const QWidget& where)
{
    for (const QLabel* const each : inSight<QLabel>(where)) {
        if (each->text().isEmpty())
            continue;
        const QSize needed = each->wordWrap() ? QSize(1, each->heightForWidth(each->width()))
                                              : each->minimumSizeHint();
        EXPECT_LE(needed.width(), each->width()) << nameOf(*each);
        EXPECT_LE(needed.height(), each->height()) << nameOf(*each);
    }
    for (const QAbstractButton* const each : inSight<QAbstractButton>(where)) {
        EXPECT_LE(each->minimumSizeHint().width(), each->width())
            << nameOf(*each) << ": " << each->text().toStdString();
        EXPECT_LE(each->fontMetrics().height(), each->height())
            << nameOf(*each) << ": " << each->text().toStdString();
    }
    for (const QGroupBox* const each : inSight<QGroupBox>(where))
        EXPECT_LE(each->minimumSizeHint().width(), each->width())
            << nameOf(*each) << ": " << each->title().toStdString();
    for (const QComboBox* const each : inSight<QComboBox>(where))
        expectChoicesShown(*each);
    for (const QAbstractSpinBox* const each : inSight<QAbstractSpinBox>(where))
        expectNumberShown(*each);
    expectHeadsShown(where);
}

// ---- a dark desktop -----------------------------------------------------------------------------

class DarkDesktop {
public:
    DarkDesktop() : before_(QApplication::palette())
    {
        QApplication::setPalette(darkPalette());
    }
    ~DarkDesktop()
    {
        QApplication::setPalette(before_);
    }
    DarkDesktop(const DarkDesktop&) = delete;
    DarkDesktop& operator=(const DarkDesktop&) = delete;

private:
    const QPalette before_;
};

// As the guidelines for accessible web pages reckon it; 3 is what drawings need.
inline double contrast(const QColor& a, const QColor& b)
{
    const auto luminance = [](const QColor& colour) {
        const auto linear = [](double part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF());
    };
    const double lighter = std::max(luminance(a), luminance(b));
    const double darker = std::min(luminance(a), luminance(b));
    return (lighter + 0.05) / (darker + 0.05);
}

// Of a picture's hundred pixels.
inline double lightPercent(const QImage& picture)
{
    constexpr int lightGray = 0xC8;
    long long light = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            light += qGray(picture.pixel(x, y)) > lightGray ? 1 : 0;
    return 100.0 * static_cast<double>(light) / picture.width() / picture.height();
}

// Grounds are light before and dark then; letters are the other way round, and few.
inline void expectTurnsDark(QWidget& where)
{
    constexpr double mostLetters = 10;
    EXPECT_GT(lightPercent(where.grab().toImage()), 50);
    const DarkDesktop dark;
    QCoreApplication::processEvents();
    EXPECT_LT(lightPercent(where.grab().toImage()), mostLetters);
    for (const QLabel* const each : inSight<QLabel>(where))
        EXPECT_EQ(each->palette().color(QPalette::WindowText),
                  QApplication::palette(each).color(QPalette::WindowText))
            << nameOf(*each);
}

} // namespace dov417

#endif
