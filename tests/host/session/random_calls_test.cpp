#include <QTimer>
#include <algorithm>
#include <array>
#include <random>
#include <set>

#include "session_world.h"

namespace dov417 {

namespace {

constexpr int addressCount = 64; // R_W:0 to R_W:63
constexpr int secondBit = 0x40;  // set in every value of the second controller
constexpr int variantShift = 8;
constexpr int variants = 256;
constexpr int bitsPerWord = 16;

// Every value names its address and its controller; the high byte is free.
int valueOf(int controller, int address, int variant)
{
    return variant << variantShift | controller * secondBit | address;
}

// One that now and then refuses or says nothing, and remembers what it has held.
class NamingController {
public:
    NamingController(int number, std::mt19937& random) : number_(number), random_(random)
    {
        for (int address = 0; address < addressCount; ++address)
            store(address, valueOf(number, address, 0));
        slave.arrived = [this](const QByteArray& bytes) {
            pending_ += bytes;
            while (pending_.size() >= shortest && pending_.size() >= lengthOfFirst()) {
                const QByteArray request = pending_.left(lengthOfFirst());
                pending_.remove(0, request.size());
                answer(request);
            }
        };
    }

    bool hasHeld(int address, int value) const
    {
        return held_.count({address, value}) != 0;
    }

    PtySlave slave;
    bool isPlugged = true;
    std::vector<int> foreign; // values that were meant for the other one, or another address

private:
    static constexpr int shortest = 8;

    int number(const QByteArray& bytes, int at) const
    {
        return static_cast<unsigned char>(bytes.at(at)) * 256 +
               static_cast<unsigned char>(bytes.at(at + 1));
    }
    int lengthOfFirst() const
    {
        return pending_.at(1) == 16 ? shortest + 1 + static_cast<unsigned char>(pending_.at(6))
                                    : shortest;
    }
    void store(int address, int value)
    {
        if ((value & 0xFF) != (number_ * secondBit | address))
            foreign.push_back(value);
        values_[address] = value;
        held_.insert({address, value});
    }
    void answer(const QByteArray& request)
    {
        const auto chance = random_() % 100;
        if (chance < 3 || !isPlugged)
            return;
        if (request.at(1) == 8) {
            slave.send(request);
            return;
        }
        if (chance < 8) {
            QByteArray exception = request.left(1);
            exception.append(static_cast<char>(request.at(1) | 0x80));
            exception.append('\4');
            slave.send(withCrc(exception));
            return;
        }
        const int first = number(request, 2) - 0x0500;
        if (request.at(1) == 6) {
            store(first, number(request, 4));
            slave.send(request);
            return;
        }
        const int count = number(request, 4);
        if (request.at(1) == 16) {
            for (int i = 0; i < count; ++i)
                store(first + i, number(request, 7 + 2 * i));
            slave.send(withCrc(request.left(6)));
            return;
        }
        QByteArray reply = request.left(2);
        reply.append(static_cast<char>(2 * count));
        for (int i = 0; i < count; ++i) {
            // By itself a value changes, too.
            if (random_() % 8 == 0 && first + i < addressCount)
                store(first + i,
                      valueOf(number_, first + i, static_cast<int>(random_() % variants)));
            reply.append(static_cast<char>(values_[first + i] >> 8));
            reply.append(static_cast<char>(values_[first + i] & 0xFF));
        }
        slave.send(withCrc(reply));
    }

    int number_;
    std::mt19937& random_;
    std::map<int, int> values_;
    std::set<std::pair<int, int>> held_;
    QByteArray pending_;
};

class RandomCalls : public LoadedLibrary, public ::testing::WithParamInterface<unsigned> {
protected:
    void SetUp() override
    {
        session = std::make_unique<Session>(library, SessionSettings{2, 20});
        QObject::connect(session.get(), &Session::changed, session.get(),
                         [this](const ViewChanges& changes) {
                             for (const ViewChange& change : changes)
                                 check(change.view);
                             maybeAct();
                         });
        QObject::connect(session.get(), &Session::transmissionEnded, session.get(),
                         [this](const Transmission&) {
                             ++transmissions;
                             checkAll();
                             maybeAct();
                         });
        QObject::connect(session.get(), &Session::portChanged, session.get(),
                         [this](bool, const std::string&) { maybeAct(); });
        QObject::connect(session.get(), &Session::abandoned, session.get(),
                         [this](const std::string&, const std::string&) { maybeAct(); });
    }

    int upTo(int count)
    {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    }

    // ---- what must hold ----

    void checkWord(int address, int value, int controller)
    {
        EXPECT_TRUE(controllers.at(static_cast<std::size_t>(controller))->hasHeld(address, value))
            << "R_W:" << address << " as " << value << " of controller " << controller;
    }
    void check(const View& view)
    {
        if (!view.hasValue)
            return;
        goodValues += view.quality() == Quality::good ? 1 : 0;
        if (view.address.width == Width::bit)
            return; // the words tell more
        for (std::size_t i = 0; i < view.value.size(); i += 2)
            checkWord(view.address.first + static_cast<int>(i / 2),
                      view.value.at(i) + 256 * view.value.at(i + 1), here);
    }
    void checkAll()
    {
        for (const View& view : session->views()) {
            check(view);
            EXPECT_TRUE(session->isOpen() || view.quality() != Quality::good);
        }
    }
    // Counts an outcome, and now and then does something else.
    std::size_t begin()
    {
        outcomes.push_back(0);
        return outcomes.size() - 1;
    }
    void end(std::size_t number)
    {
        ++outcomes.at(number);
        maybeAct();
    }

    // ---- what is done ----

    void maybeAct()
    {
        if (calls < maximumCalls && upTo(4) == 0)
            act();
    }

    Address anyAddress(bool isBitPossible)
    {
        const int first = upTo(addressCount - 8);
        switch (upTo(isBitPossible ? 3 : 2)) {
        case 0:
            return words("R_W", first, 1 + upTo(4));
        case 1:
            return doubleWords("R_D", first, 2 + 2 * upTo(2));
        default:
            return bits("R_bit", first * bitsPerWord + variantShift + upTo(8));
        }
    }

    void act()
    {
        ++calls;
        const int chance = upTo(100);
        if (chance < 20) {
            std::vector<Address> watched;
            for (int i = upTo(6); i >= 0; --i)
                watched.push_back(anyAddress(true));
            EXPECT_TRUE(session->watch(watched).accepted);
        } else if (chance < 55) {
            write();
        } else if (chance < 70) {
            read();
        } else if (chance < 80) {
            recipe();
        } else if (chance < 87) {
            session->setSettings({1 + upTo(3), 4 + 4 * upTo(5)});
        } else if (chance < 90) {
            session->close();
        } else if (chance < 98) {
            open(upTo(2));
        } else {
            replug();
        }
        checkAll();
    }

    void write()
    {
        Write piece{anyAddress(true), {}};
        const Address& address = piece.address;
        const std::size_t number = begin();
        if (address.width == Width::bit)
            piece.data = {static_cast<unsigned char>(upTo(2))};
        for (int i = 0; address.width != Width::bit && i < address.length; ++i) {
            const int value = valueOf(here, address.first + i, upTo(variants));
            piece.data.push_back(static_cast<unsigned char>(value & 0xFF));
            piece.data.push_back(static_cast<unsigned char>(value >> 8));
        }
        session->write(piece, [this, number](const Result&) { end(number); });
    }

    void read()
    {
        const std::size_t number = begin();
        session->readOnce(anyAddress(false), [this, number](const Result&) { end(number); });
    }

    void recipe()
    {
        const std::size_t number = begin();
        const int first = upTo(addressCount - 8);
        const int second = upTo(addressCount - 8);
        const std::vector<Address> parts = {words("R_W", first, 2), words("R_W", second, 3)};
        const RecipeLayout layout = layOutRecipe(parts);
        const bool isUpload = upTo(2) == 0;
        RecipeWords data(layout.bufferWords);
        for (const Address& part : parts)
            for (int i = part.first; i < part.first + part.length; ++i)
                data.at(layout.offsetOf(words("R_W", i))) =
                    static_cast<std::uint16_t>(valueOf(here, i, upTo(variants)));
        session->transferRecipe(
            layout, isUpload ? RecipeDirection::upload : RecipeDirection::download, data,
            [this, number, layout, first, controller = here](const Result& result,
                                                             const RecipeWords& words_) {
                if (result.accepted)
                    for (int i = 0; i < 2; ++i)
                        checkWord(first + i, words_.at(layout.offsetOf(words("R_W", first + i))),
                                  controller);
                end(number);
            });
    }

    // Whoever is told of the end of the line before may open another one.
    void open(int controller)
    {
        LineSettings line;
        line.device = controllers.at(static_cast<std::size_t>(controller))->slave.port();
        line.timeout = std::chrono::milliseconds(40);
        const Result result = session->open(line);
        here = controller;
        EXPECT_EQ(result.accepted, controllers.at(static_cast<std::size_t>(controller))->isPlugged)
            << result.reason;
    }

    void replug()
    {
        NamingController& controller = *controllers.at(static_cast<std::size_t>(here));
        if (controller.isPlugged)
            controller.slave.unplug();
        else
            controller.slave.plug();
        controller.isPlugged = !controller.isPlugged;
    }

    static constexpr int maximumCalls = 400;
    std::mt19937 random{GetParam()};
    std::array<std::unique_ptr<NamingController>, 2> controllers = {
        std::make_unique<NamingController>(0, random),
        std::make_unique<NamingController>(1, random)};
    int here = 0;
    int calls = 0;
    int transmissions = 0;
    int goodValues = 0; // that were looked at
    std::vector<int> outcomes;
    std::unique_ptr<Session> session;
};

// Calls of every kind, from within listeners and from outside: each request ends exactly once, and
// no value is shown that its controller never held at its address.
TEST_P(RandomCalls, KeepTheirPromises)
{
    open(0);
    while (calls < maximumCalls && !HasFailure()) {
        act();
        if (session->isOpen()) {
            QTimer patience;
            patience.setSingleShot(true);
            patience.start(50);
            const int last = transmissions + upTo(4);
            waitUntil([&]() { return !patience.isActive() || transmissions >= last; });
        }
        if (!controllers.at(static_cast<std::size_t>(here))->isPlugged)
            replug();
        if (!session->isOpen())
            open(upTo(2));
    }
    // Among the calls only so many replies came as the machine was fast enough for.
    session->watch({words("R_W", 0, 4)});
    EXPECT_TRUE(waitUntil([this]() {
        for (const View& view : session->views())
            check(view);
        return goodValues > 100 && transmissions > 20;
    }));
    session->close();
    while (!HasFailure() && std::find(outcomes.begin(), outcomes.end(), 0) != outcomes.end()) {
        const auto before = outcomes;
        session->tellAll();
        session->close();
        if (outcomes == before)
            break;
    }
    for (std::size_t number = 0; number < outcomes.size(); ++number)
        EXPECT_EQ(outcomes.at(number), 1) << "request " << number;
    for (const auto& controller : controllers)
        EXPECT_THAT(controller->foreign, ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCalls, ::testing::Values(1U, 2U));

} // namespace

} // namespace dov417
