#include "recipe_round.h"

#include <algorithm>

#include "write_ledger.h"

using dov417::simulator::Area;

namespace {

enum {
    downloadFlag = 60115,
    uploadFlag = 60116
};

struct RecipePart {
    int station;
    const char* regName;
    Area area;
    int address;
    int length;
    int offset;
};

// Neighbours in the controller are neighbours in the buffer.
const RecipePart parts[] = {
    {1, "R_W", Area::R, 2000, 60, 0},    {1, "R_W", Area::R, 2060, 40, 60},
    {1, "R_D", Area::R, 2200, 8, 100},   {1, "M_W", Area::M, 100, 5, 110},
    {1, "T", Area::T, 100, 4, 120},      {1, "C", Area::C, 7, 1, 130},
    {2, "R_W", Area::R, 2000, 120, 140}, {2, "Q_W", Area::Q, 50, 10, 270},
};

} // namespace

RecipeRound::RecipeRound(dov417::simulator::Memory& memory, std::vector<unsigned char>& block,
                         std::vector<unsigned short>& buffer)
    : memory_(memory), block_(block), buffer_(buffer)
{
}

void RecipeRound::plan()
{
    QVector<_RCP_VAR_PRO> records;
    for (const RecipePart& part : parts) {
        _RCP_VAR_PRO record = _RCP_VAR_PRO();
        record.linkId = driver.callBackTag;
        record.stationNo = part.station;
        record.regName = QString::fromLatin1(part.regName);
        record.address = part.address;
        record.length = part.length;
        record.bufOffset = part.offset;
        records.append(record);
    }
    if (intf_setRcpAddress(records) != records.size()) {
        disagree(QStringLiteral("recipe addresses were refused"));
    }
}

void RecipeRound::start(std::mt19937& random)
{
    if (stage_ != idle) {
        return;
    }
    for (unsigned short& word : buffer_) {
        word = static_cast<unsigned short>(random());
    }
    stage_ = downloading;
    failed_ = false;
    block_[downloadFlag] = 1;
}

void RecipeRound::look(int sendKind, int result)
{
    if (stage_ == idle) {
        return;
    }
    failed_ = failed_ || (result == 2 && sendKind == (stage_ == downloading ? 5 : 6));
    if (block_[stage_ == downloading ? downloadFlag : uploadFlag] != 0) {
        return;
    }
    if (failed_) {
        ++givenUp_;
        stage_ = idle;
    } else if (stage_ == downloading) {
        compare("download");
        ++downloads_;
        std::fill(buffer_.begin(), buffer_.end(), static_cast<unsigned short>(0));
        stage_ = uploading;
        block_[uploadFlag] = 1;
    } else {
        compare("upload");
        ++uploads_;
        stage_ = idle;
    }
}

void RecipeRound::reset()
{
    block_[downloadFlag] = block_[uploadFlag] = 0;
    stage_ = idle;
}

void RecipeRound::compare(const char* direction) const
{
    for (const RecipePart& part : parts) {
        for (int i = 0; i < part.length; ++i) {
            if (memory_.station(part.station)->word(part.area, part.address + i) !=
                buffer_[static_cast<size_t>(part.offset + i)]) {
                disagree(QStringLiteral("after a recipe %1 word %2 of %3 %4 differs")
                             .arg(QLatin1String(direction))
                             .arg(i)
                             .arg(QLatin1String(part.regName))
                             .arg(part.address));
            }
        }
    }
}
