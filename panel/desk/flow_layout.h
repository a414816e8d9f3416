// Widgets side by side, and in a further row where there is no more room: a row of tools in a
// language with longer words, or with larger letters.
#ifndef DOV417_PANEL_FLOW_LAYOUT_H
#define DOV417_PANEL_FLOW_LAYOUT_H

#include <QLayout>
#include <QWidget>
#include <vector>

namespace dov417 {

class FlowLayout : public QLayout {
public:
    // Without margins.
    explicit FlowLayout(QWidget* parent);
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override;
    int count() const override;
    QLayoutItem* itemAt(int place) const override;
    QLayoutItem* takeAt(int place) override;
    Qt::Orientations expandingDirections() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;
    QSize minimumSize() const override;
    QSize sizeHint() const override;
    void setGeometry(const QRect& area) override;

private:
    // Puts the items there if they are to be, and returns the height that they take.
    int arrange(const QRect& area, bool isToBe) const;

    std::vector<QLayoutItem*> items_;
};

// A label and what belongs to it, which stay in one row.
QWidget* sideBySide(const std::vector<QWidget*>& widgets);

} // namespace dov417

#endif
