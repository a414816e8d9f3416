// One read and one write through the loaded library alone, as a panel's runtime does it.
#include <QMutex>
#include <cstring>
#include <vector>

#include "library.h"

namespace {

std::vector<std::string> told;

void valueChanged(int tag, int station, QString& regName, int address)
{
    told.push_back(std::to_string(tag) + ' ' + std::to_string(station) + ' ' + latin1(regName) +
                   ' ' + std::to_string(address));
}

std::vector<std::string> whatWasTold()
{
    std::vector<std::string> all;
    all.swap(told);
    return all;
}

class Panel : public ::testing::Test {
protected:
    Panel() : block(60117, 0)
    {
        told.clear();
        LOADED(library, intf_setAddrValueChangeCallBack)(valueChanged);
        int result = -1;
        EXPECT_EQ(LOADED(library, intf_initProperty)(block.data(), 0, nullptr, &result,
                                                     "7#0#0#3#10", &mutex),
                  1);
        EXPECT_EQ(result, 0);
    }

    static KEY_ADDRESS watched(const char* regName, int address, int length)
    {
        KEY_ADDRESS key = KEY_ADDRESS();
        key.stationNo = 1;
        key.regName = QString::fromLatin1(regName);
        key.address = address;
        key.length = length;
        return key;
    }

    int watch(QList<KEY_ADDRESS> keys)
    {
        return LOADED(library, intf_addrMerge)(keys);
    }

    int write(const char* regName, int address, int value)
    {
        unsigned char bytes[2] = {static_cast<unsigned char>(value & 0xFF),
                                  static_cast<unsigned char>(value >> 8)};
        return LOADED(library, intf_setData)(1, QString::fromLatin1(regName), address, 1, bytes, 2);
    }

    // The bytes to transmit, "" where there is nothing to send.
    std::string poll()
    {
        frame = FRAME_PRO();
        return LOADED(library, intf_getSendFrame)(&frame) == 1
                   ? toHex(frame.frame, frame.sendLength)
                   : "";
    }

    int reply(const char* hex)
    {
        QByteArray received = fromHex(hex);
        QString text;
        const int result = LOADED(library, intf_dealRcvFrame)(&received, &text);
        errorText = latin1(text);
        return result;
    }

    std::string read(const char* regName, int address, int length)
    {
        std::vector<unsigned char> out(static_cast<size_t>(2 * length), 0xEE);
        EXPECT_EQ(LOADED(library, intf_getData)(1, QString::fromLatin1(regName), address, length,
                                                out.data()),
                  1);
        return toHex(out.data(), 2 * length);
    }

    const Quiet quiet;
    const Library library;
    std::vector<unsigned char> block;
    QMutex mutex;
    FRAME_PRO frame;
    std::string errorText;
};

TEST_F(Panel, OneReadAndOneWriteGoTheirWholeRoad)
{
    EXPECT_EQ(watch({watched("T", 3, 1), watched("R_W", 10, 1)}), 2);
    EXPECT_EQ(read("R_W", 10, 1), "0000");

    // The read: request, reply, notice, value.
    EXPECT_EQ(poll(), "0103050a0001a4c4");
    EXPECT_EQ(frame.replyLength, 7);
    EXPECT_EQ(latin1(frame.request.regName), "R_W");
    EXPECT_EQ(frame.request.kind, 4);
    EXPECT_EQ(reply("0103021234b533"), 1);
    EXPECT_EQ(errorText, "1#R_W10(1)");
    EXPECT_EQ(whatWasTold(), (std::vector<std::string>{"7 1 R_W 10"}));
    EXPECT_EQ(read("R_W", 10, 1), "3412");

    // The finished request waits for the other one; the same value again is no news.
    EXPECT_EQ(poll(), "010301830001741e");
    EXPECT_EQ(reply("0103020000b844"), 1);
    EXPECT_EQ(poll(), "0103050a0001a4c4");
    EXPECT_EQ(reply("0103021234b533"), 1);
    EXPECT_EQ(whatWasTold(), std::vector<std::string>());

    // The write: shown at once, then sent before any read, then the controller's own.
    EXPECT_EQ(write("R_W", 10, 0x5678), 1);
    EXPECT_EQ(whatWasTold(), (std::vector<std::string>{"7 1 R_W 10"}));
    EXPECT_EQ(read("R_W", 10, 1), "7856");
    EXPECT_EQ(library.driver().writeList.size(), 1);
    EXPECT_EQ(poll(), "0106050a56789686");
    EXPECT_EQ(frame.replyLength, 8);
    EXPECT_EQ(frame.request.kind, 2);
    EXPECT_EQ(reply("0106050a56789686"), 1);
    EXPECT_EQ(errorText, "1#R_W10(1)");
    EXPECT_EQ(library.driver().writeList.size(), 0);
    EXPECT_EQ(read("R_W", 10, 1), "7856");

    // The cyclic reads go on, and the written value that comes back is no news either.
    EXPECT_EQ(poll(), "010301830001741e");
    EXPECT_EQ(reply("0103020000b844"), 1);
    EXPECT_EQ(poll(), "0103050a0001a4c4");
    EXPECT_EQ(reply("010302567887c6"), 1);
    EXPECT_EQ(whatWasTold(), std::vector<std::string>());
}

TEST_F(Panel, BitOfARegisterIsWrittenWithTheOtherBitsAsTheyWere)
{
    EXPECT_EQ(watch({watched("R_bit", 35, 1)}), 1);
    unsigned char set[1] = {1};
    EXPECT_EQ(LOADED(library, intf_setData)(1, QString::fromLatin1("R_bit"), 35, 1, set, 2), 1);
    EXPECT_EQ(poll(), "0103050200012506");
    EXPECT_EQ(reply("0103021234b533"), 1);
    EXPECT_EQ(errorText, "1#R_bit2.3(1)");
    EXPECT_EQ(poll(), "01100502000102123cfe03");
}

TEST_F(Panel, IsToldWhenAWriteIsGivenUpAndReadsTheControllersValueAgain)
{
    EXPECT_EQ(watch({watched("R_W", 10, 1)}), 1);
    ASSERT_NE(poll(), "");
    ASSERT_EQ(reply("0103021234b533"), 1);
    EXPECT_EQ(write("R_W", 10, 0x5678), 1);
    whatWasTold();
    ASSERT_EQ(poll(), "0106050a56789686");
    EXPECT_EQ(reply(""), 8);
    EXPECT_EQ(poll(), "0106050a56789686");
    EXPECT_EQ(reply("0106050a56789687"), 8);
    EXPECT_EQ(reply("010302"), 2);
    EXPECT_EQ(whatWasTold(), (std::vector<std::string>{"7 1 R_W 10"}));
    EXPECT_EQ(read("R_W", 10, 1), "3412");
}

} // namespace
