#include "panel/values/lamps_model.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "panel/desk/state_words.h"

namespace dov417 {

namespace {

// "[3]" of a tag of several bits, whose own name stands beside the row; nothing where no tag names
// it.
QString shortName(const PanelValue& value)
{
    const std::string& name = value.label.name;
    if (name == value.label.address)
        return QString();
    return QString::fromStdString(valueCount(value.item->address) > 1 ? name.substr(name.rfind('['))
                                                                      : name);
}

// What stands beside its row.
QString blockName(const PanelValue& value)
{
    const bool isBlock =
        value.label.name != value.label.address && valueCount(value.item->address) > 1;
    return isBlock ? QString::fromStdString(value.item->name) : QString();
}

} // namespace

LampsModel::LampsModel(PanelDesk& desk) : desk_(desk)
{
    connect(&desk, &PanelDesk::valuesChanged, this,
            [this](const std::vector<Address>& addresses) { tell(addresses); });
}

void LampsModel::clear()
{
    if (words_.empty())
        return;
    beginResetModel();
    words_.clear();
    cells_.clear();
    endResetModel();
}

QString LampsModel::rowTitle(const LampWord& word)
{
    const QString blocks = word.blocks.join(QStringLiteral(", "));
    return blocks.isEmpty() ? word.title : blocks + QLatin1Char('\n') + word.title;
}

void LampsModel::beginAnew()
{
    beginResetModel();
    words_.clear();
    cells_.clear();
    std::map<std::tuple<int, std::string, int>, LampWord> words;
    auto last = words.end(); // mostly the next bit's, too
    int place = 0;
    for (const PanelValue& value : desk_.tags().values) {
        const int here = place++;
        if (value.address.width != Width::bit)
            continue;
        const int number = value.address.first / bitsOfAWord;
        auto word = last;
        const bool isSame = word != words.end() && std::get<2>(word->first) == number &&
                            std::get<0>(word->first) == value.address.station &&
                            std::get<1>(word->first) == value.address.regName;
        bool isNew = false;
        if (!isSame)
            std::tie(word, isNew) =
                words.try_emplace({value.address.station, value.address.regName, number});
        last = word;
        if (isNew) {
            word->second.title = QStringLiteral("%1/%2:%3")
                                     .arg(value.address.station)
                                     .arg(QString::fromStdString(value.address.regName))
                                     .arg(number);
            word->second.places.fill(-1);
        }
        // The first that names it: another tag of the same bit is the same lamp.
        int& at =
            word->second.places.at(static_cast<std::size_t>(value.address.first) % bitsOfAWord);
        if (at < 0)
            at = here;
        const QString block = blockName(value);
        if (!block.isEmpty() && !word->second.blocks.contains(block))
            word->second.blocks.append(block);
    }
    cells_.reserve(words.size() * bitsOfAWord);
    for (const auto& [key, word] : words) {
        const int row = static_cast<int>(words_.size());
        words_.push_back(word);
        for (int bit = 0; bit < bitsOfAWord; ++bit)
            if (const PanelValue* const value = valueAt(index(row, bit)))
                cells_[value->address] = index(row, bit);
    }
    endResetModel();
}

// A row at a time, as a view takes longer for each signal than for the lamps of a row.
void LampsModel::tell(const std::vector<Address>& addresses)
{
    int first = -1; // of the columns that have changed in this row
    int last = -1;
    int row = -1;
    const auto tellRow = [&]() {
        if (row >= 0)
            emit dataChanged(index(row, first), index(row, last));
    };
    for (const Address& address : addresses) {
        const auto cell = cells_.find(address);
        if (cell == cells_.end())
            continue;
        const QModelIndex& each = cell->second;
        if (each.row() != row) {
            tellRow();
            row = each.row();
            first = last = each.column();
        }
        first = std::min(first, each.column());
        last = std::max(last, each.column());
    }
    tellRow();
}

const PanelValue* LampsModel::valueAt(const QModelIndex& index) const
{
    if (!index.isValid())
        return nullptr;
    const int place = words_.at(static_cast<std::size_t>(index.row()))
                          .places.at(static_cast<std::size_t>(index.column()));
    return place < 0 ? nullptr : &desk_.tags().values.at(static_cast<std::size_t>(place));
}

std::optional<bool> LampsModel::isOn(const QModelIndex& index) const
{
    const PanelValue* const value = valueAt(index);
    const View* const view = value ? desk_.book().find(value->address) : nullptr;
    return view ? std::optional<bool>(view->value.front() != 0) : std::nullopt;
}

ValueStanding LampsModel::standingAt(const QModelIndex& index) const
{
    const PanelValue* const value = valueAt(index);
    return value ? desk_.book().standing(value->address) : ValueStanding();
}

int LampsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(words_.size());
}

int LampsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : bitsOfAWord;
}

QVariant LampsModel::data(const QModelIndex& index, int role) const
{
    const PanelValue* const value = valueAt(index);
    if (!value)
        return QVariant();
    const QString name = QString::fromStdString(value->label.name);
    if (role == Qt::DisplayRole)
        return shortName(*value);
    if (role != Qt::ToolTipRole && role != Qt::AccessibleTextRole)
        return QVariant();
    const std::optional<bool> on = isOn(index);
    const QString state = !on ? tr("not known") : *on ? tr("on") : tr("off");
    return tr("%1 (%2): %3, %4")
        .arg(name, QString::fromStdString(value->label.address), state,
             standingText(standingAt(index)));
}

QVariant LampsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    return orientation == Qt::Horizontal ? QString::number(section)
                                         : rowTitle(words_.at(static_cast<std::size_t>(section)));
}

Qt::ItemFlags LampsModel::flags(const QModelIndex& index) const
{
    return valueAt(index) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

} // namespace dov417
