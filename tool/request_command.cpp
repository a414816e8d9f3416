#include "tool/commands.h"

#include <CLI/CLI.hpp>
#include <QEventLoop>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "driver/areas.h"
#include "line/conversation.h"
#include "line/crc16.h"
#include "line/failure.h"
#include "line/frame_bytes.h"
#include "line/frame_length.h"
#include "line/frame_text.h"
#include "live/live_line.h"
#include "live/shutdown.h"
#include "session/single_request.h"
#include "text/raw_requests.h"
#include "tool/defaults.h"
#include "tool/json_output.h"
#include "tool/trace_lines.h"

namespace dov417 {

namespace {

using Json = nlohmann::ordered_json;

struct RequestOptions {
    LineOptions line;
    std::vector<std::string> words;
    std::string raw;
    bool json = false;
};

QByteArray frameOf(const RequestOptions& options)
{
    if (!options.raw.empty() && !options.words.empty())
        throw UsageFailure("--raw has station, function and data in it: give no others");
    return options.raw.empty() ? parseRequest(options.words) : parseRawRequest(options.raw);
}

// Why it is no success; empty where it is.
std::string failureOf(const std::optional<Transmission>& ended, const std::string& interruption)
{
    if (!ended)
        return interruption.empty() ? "not sent" : interruption;
    const Reception& reception = ended->reception;
    if (reception.result == LineResult::broadcast)
        return std::string();
    if (reception.result == LineResult::reply && isSound(reception)) {
        const int head = echoedHead(ended->sent);
        constexpr int functionEnd = 2;
        const int valueEnd = ended->replyLength - crcLength; // a write's reply repeats all before
        const bool isOther = head > functionEnd && ended->replyLength != untoldLength &&
                             ended->sent.at(1) != '\x08' &&
                             reception.bytes.left(valueEnd) != ended->sent.left(valueEnd);
        return isOther ? "the answer names another value than was sent" : std::string();
    }
    const auto waited = std::chrono::round<std::chrono::milliseconds>(ended->timeout).count();
    return reasonText(reception, ended->replyLength,
                      ended->timeout > Micros(0) ? " within " + std::to_string(waited) + " ms"
                                                 : std::string());
}

// What passes, told as `trace` does, or kept for the object.
class RequestTeller {
public:
    RequestTeller(bool json, const QByteArray& frame, const std::vector<Area>& areas)
        : json_(json), frame_(frame), conversation_(areas)
    {
    }

    LineObserver observer()
    {
        LineObserver observer;
        observer.sent = [this](const Transmission& transmission) {
            wasSent_ = wasSent_ || (transmission.sent == frame_ && !transmission.isMarker);
            if (wasSent_)
                tell("request", Direction::sent, frame_, conversation_.request(frame_));
        };
        observer.markerEnded = [](const Transmission&) {};
        observer.stray = [this](const Stray& stray) {
            if (!wasSent_)
                return;
            const std::string text = stray.kind == StrayKind::noise
                                         ? std::to_string(stray.bytes.size()) + " bytes"
                                         : conversation_.stray(stray.bytes);
            tell("stray", Direction::stray, stray.bytes, text + " [" + nameOf(stray.kind) + "]");
        };
        observer.notice = [](const std::string& text) {
            std::fprintf(stderr, "dov417: %s\n", text.c_str());
        };
        observer.doubt = []() {};
        observer.port = [this](bool open, const QString& message) {
            interruption_ = open ? std::string() : message.toStdString();
        };
        return observer;
    }

    void ended(const Transmission& transmission)
    {
        const Reception& reception = transmission.reception;
        if (!wasSent_ || reception.bytes.isEmpty())
            return;
        tell("reply", Direction::received, reception.bytes, conversation_.reply(reception.bytes));
        if (json_ && reception.firstByte != Clock::time_point()) {
            const auto after = std::max<Clock::duration>(
                Clock::duration::zero(), reception.firstByte - transmission.sendEnd);
            all_["reply"]["after"] = std::chrono::duration<double, std::milli>(after).count();
        }
    }

    const std::string& interruption() const
    {
        return interruption_;
    }
    void interrupt()
    {
        interruption_ = "interrupted";
    }

    void finish(const std::string& failure, bool isBroadcast)
    {
        if (json_) {
            if (!failure.empty())
                all_["failure"] = failure;
            sayJson(all_);
        } else if (!failure.empty()) {
            std::fprintf(stderr, "dov417: %s\n", failure.c_str());
        } else if (isBroadcast) {
            std::printf("sent to all stations; nobody answers a broadcast\n");
        }
    }

private:
    void tell(const char* key, Direction direction, const QByteArray& bytes,
              const std::string& text)
    {
        const LogTime time = logTime(Clock::now());
        const Json object = {
            {"time", logTimeText(time)}, {"bytes", hexText(bytes)}, {"text", text}};
        if (direction == Direction::stray)
            all_["strays"].push_back(object);
        else
            all_[key] = object;
        if (!json_)
            std::printf("%s", lines_.of(time, TraceLines::arrow(direction) + text, bytes).c_str());
        std::fflush(stdout);
    }

    bool json_;
    QByteArray frame_;
    Conversation conversation_;
    TraceLines lines_;
    std::string interruption_;
    bool wasSent_ = false;
    Json all_ = Json::object();
};

int runRequest(const RequestOptions& options)
{
    const QByteArray frame = frameOf(options);
    const Library library(options.line.library);
    RequestTeller teller(options.json, frame, learnAreas(library));
    QEventLoop loop;
    std::unique_ptr<SingleRequest> request;
    bool isLeaving = false;
    const Shutdown shutdown([&]() {
        if (isLeaving || !request) {
            loop.quit();
            return;
        }
        isLeaving = true;
        teller.interrupt();
        request->leave();
    });
    const int station = static_cast<unsigned char>(frame.at(0));
    const LiveLine line(library, options.line, {station});
    bool isDone = false;
    request = std::make_unique<SingleRequest>(frame, line.settings(),
                                              line.recorded(teller.observer()), [&]() {
                                                  isDone = true;
                                                  loop.quit();
                                              });
    request->told = [&](const Transmission& ended) {
        line.recordEnd(ended);
        teller.ended(ended);
    };
    request->start();
    if (!isDone)
        loop.exec();
    const std::string failure = failureOf(request->ended(), teller.interruption());
    teller.finish(failure, station == 0);
    if (line.hasLostLog())
        std::fprintf(stderr, "dov417: the log %s could not be written\n", options.line.log.c_str());
    return failure.empty() && !line.hasLostLog() ? exitDone : exitFailed;
}

} // namespace

void addRequestCommand(CLI::App& app, Action& chosen)
{
    const auto options = std::make_shared<RequestOptions>();
    CLI::App* command =
        app.add_subcommand("request", "Any request to any station, and what comes back");
    command
        ->add_option("words", options->words,
                     "Station, function and its data, as numbers of the line: the first address "
                     "is 0. The manual page has the data of each function")
        ->option_text("STATION FUNCTION DATA...");
    command
        ->add_option("--raw", options->raw,
                     "Bytes in hex from the station on instead; the CRC is appended")
        ->option_text("BYTES");
    addJsonFlag(*command, chosen, options->json);
    addLineOptions(*command, options->line);
    for (const char* none : {"--retries", "--probe", "--gap", "--max-registers", "--stats"})
        command->remove_option(command->get_option(none));
    addDefaults(*command, {&options->line, nullptr}, chosen);
    command->footer(
        "It is sent once, whatever comes, and a write is not asked about. What is told is what was "
        "sent and what came, as trace tells it. The answer to a write of one value is the request "
        "itself, as an adapter's echo is: there one register is read first, which tells.\n"
        "Examples:\n"
        "  dov417 request --simulated 1 3 1380 8\n"
        "  dov417 request --simulated 1 6 1380 0x1234\n"
        "  dov417 request --simulated --raw '01 03 05 64 00 02'\n"
        "On a real line, --port /dev/ttyUSB0 stands for --simulated.\n"
        "Exits with 1 if no sound answer came, or an exception.");
    command->callback(
        [options, &chosen]() { chosen = [options]() { return runRequest(*options); }; });
}

} // namespace dov417
