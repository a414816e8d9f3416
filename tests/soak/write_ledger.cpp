#include "write_ledger.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

using dov417::simulator::Area;
using dov417::simulator::StationMemory;

namespace {

bool isBits(const WriteTarget& target)
{
    return std::strstr(target.regName, "_bit") != nullptr;
}

QByteArray held(const StationMemory& memory, const WriteTarget& target)
{
    QByteArray bytes;
    for (int i = target.address; i < target.address + target.length; ++i) {
        if (isBits(target)) {
            bytes.append(memory.bit(target.area, i / 16, i % 16) ? '\1' : '\0');
        } else {
            const unsigned int word = memory.word(target.area, i);
            bytes.append(static_cast<char>(word & 0xFFu));
            bytes.append(static_cast<char>(word >> 8));
        }
    }
    return bytes;
}

std::vector<WriteTarget> allTargets()
{
    const std::vector<WriteTarget> oneStation = {
        {1, "I_bit", 16, 10, Area::I, {}},  {1, "I_bit", 33, 1, Area::I, {}},
        {1, "Q_bit", 5, 1, Area::Q, {}},    {1, "Q_bit", 6, 1, Area::Q, {}},
        {1, "Q_bit", 1600, 8, Area::I, {}}, // a run of coils goes out without its area's base
        {1, "M_bit", 2047, 1, Area::M, {}}, {1, "R_bit", 8000, 1, Area::R, {}},
        {1, "R_bit", 8015, 1, Area::R, {}}, {1, "R_bit", 8016 + 9, 20, Area::R, {}},
        {1, "I_W", 10, 2, Area::I, {}},     {1, "Q_W", 10, 1, Area::Q, {}},
        {1, "M_W", 3, 10, Area::M, {}},     {1, "R_W", 100, 1, Area::R, {}},
        {1, "R_W", 101, 1, Area::R, {}},    {1, "R_W", 110, 10, Area::R, {}},
        {1, "R_W", 3999, 1, Area::R, {}},   {1, "R_D", 130, 2, Area::R, {}},
        {1, "R_D", 132, 8, Area::R, {}},    {1, "T", 5, 1, Area::T, {}},
        {1, "T", 6, 3, Area::T, {}},        {1, "C", 127, 1, Area::C, {}},
    };
    std::vector<WriteTarget> all = oneStation;
    for (WriteTarget target : oneStation) {
        target.station = 2;
        all.push_back(target);
    }
    all.push_back({0, "R_W", 300, 4, Area::R, {}});
    all.push_back({0, "M_bit", 900, 1, Area::M, {}});
    return all;
}

} // namespace

void disagree(const QString& sentence)
{
    std::fprintf(stderr, "disagreement: %s\n", qPrintable(sentence));
    std::exit(1);
}

WriteLedger::WriteLedger(dov417::simulator::Memory& memory)
    : memory_(memory), targets_(allTargets())
{
    for (WriteTarget& target : targets_) {
        target.inController =
            held(*memory_.station(target.station == 0 ? 1 : target.station), target);
    }
}

void WriteLedger::writeOne(std::mt19937& random)
{
    const size_t chosen = random() % targets_.size();
    const WriteTarget& target = targets_[chosen];
    QByteArray value;
    for (int i = 0; i < target.length * (isBits(target) ? 1 : 2); ++i) {
        value.append(static_cast<char>(random() % (isBits(target) ? 2 : 256)));
    }
    QByteArray handed = value;
    if (intf_setData(target.station, QString::fromLatin1(target.regName), target.address,
                     target.length, reinterpret_cast<unsigned char*>(handed.data()), 2) != 1) {
        disagree(QStringLiteral("a write was refused"));
    }
    ++counts_.asked;
    for (size_t i = queue_.size(); i-- > 1;) {
        if (queue_[i].target == chosen) {
            queue_[i].value = value;
            ++counts_.replaced;
            return;
        }
    }
    queue_.push_back({chosen, value});
}

void WriteLedger::frameSent(const FRAME_PRO& frame)
{
    if (queue_.empty()) {
        disagree(QStringLiteral("a write went out that nobody queued"));
    }
    const Entry& entry = queue_.front();
    WriteTarget& target = targets_[entry.target];
    const VARIABLE& request = frame.request;
    if (request.regName != QLatin1String(target.regName) || request.address != target.address ||
        request.stationNo != target.station ||
        std::memcmp(request.data, entry.value.constData(),
                    static_cast<size_t>(entry.value.size())) != 0) {
        disagree(QStringLiteral("the write on the line is not the oldest one"));
    }
    if (frame.frame[1] != 3) { // not the read before a write back
        target.inController = entry.value;
    }
}

void WriteLedger::frameEnded(const FRAME_PRO& frame, int result)
{
    const bool preRead = frame.frame[1] == 3;
    if (result == 8 || (result == 1 && preRead)) {
        return;
    }
    queue_.pop_front();
    ++(result == 1 ? counts_.confirmed : preRead ? counts_.unsent : counts_.givenUp);
}

void WriteLedger::reset()
{
    counts_.reset += queue_.size();
    queue_.clear();
}

void WriteLedger::requireAgreement() const
{
    if (counts_.asked != counts_.replaced + counts_.confirmed + counts_.givenUp + counts_.unsent +
                             counts_.reset + queue_.size() ||
        driver.writeList.size() != queued()) {
        disagree(QStringLiteral("a write is unaccounted for"));
    }
    for (const WriteTarget& target : targets_) {
        for (int station : memory_.stations()) {
            if ((target.station == 0 || target.station == station) &&
                held(*memory_.station(station), target) != target.inController) {
                disagree(QStringLiteral("%1 %2 of station %3 is not what was written last")
                             .arg(QLatin1String(target.regName))
                             .arg(target.address)
                             .arg(station));
            }
        }
    }
}
