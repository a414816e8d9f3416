#include "panel/desk/recipe_worker.h"

#include <algorithm>

#include "line/failure.h"
#include "session/single_reads.h"

namespace dov417 {

namespace {

// The driver is started anew for it, as for other settings of the line.
void nameCancel(std::string& problem)
{
    if (problem == changedMeanwhile)
        problem = RecipeWorker::cancelled();
}

} // namespace

std::string RecipeWorker::cancelled()
{
    return tr("it was cancelled").toStdString();
}

RecipeWorker::RecipeWorker(QObject* parent) : QObject(parent), progressTimer_(this)
{
    // For connections that are queued, to the window's thread.
    qRegisterMetaType<RecipeNews>("dov417::RecipeNews");
    progressTimer_.setInterval(progressPause);
    connect(&progressTimer_, &QTimer::timeout, this, [this]() { tellProgress(); });
}

void RecipeWorker::refuse(const RecipeOrder& order, const std::string& why)
{
    RecipeNews news;
    news.number = order.number;
    news.kind = order.kind;
    news.hasEnded = true;
    news.problems = {why};
    emit told(news);
}

void RecipeWorker::start(Session& session, const RecipeOrder& order)
{
    if (job_) {
        refuse(order, tr("another recipe is under way").toStdString());
        return;
    }
    order_ = order;
    news_ = RecipeNews();
    news_.number = order.number;
    news_.kind = order.kind;
    // What has ended is destroyed, but not while it tells; and another may have begun by then.
    job_ = std::make_unique<RecipeJob>(session, [this, number = order.number]() {
        QMetaObject::invokeMethod(
            this,
            [this, number]() {
                if (job_ && order_.number == number)
                    next();
            },
            Qt::QueuedConnection);
    });
    hearing_ = connect(&session, &Session::transmissionEnded, this,
                       [this](const Transmission& transmission) { heard(transmission); });
    progressTimer_.start();
    try {
        begin();
    } catch (const Failure& failure) {
        news_.problems = {failure.what()};
        tellEnd();
    }
}

void RecipeWorker::begin()
{
    news_.asOf = Clock::now();
    wordTimes_.clear();
    switch (order_.kind) {
    case RecipeKind::read:
        news_.isReadingBack = true;
        job_->readBack(order_.entries);
        break;
    case RecipeKind::upload:
        job_->upload(order_.entries);
        break;
    case RecipeKind::download:
        job_->download(order_.entries);
        break;
    }
}

// What was asked for last has ended.
void RecipeWorker::next()
{
    news_.problems = job_->problems();
    news_.progress = job_->progress();
    // Where all words went and not all bits, each value's own fate can still be read.
    const bool isWorthReading =
        news_.problems.empty() ||
        (news_.progress.bits > 0 && news_.progress.words == news_.progress.allWords);
    if (news_.isReadingBack) {
        news_.readings = job_->readings();
    } else if (order_.kind == RecipeKind::upload && news_.problems.empty()) {
        for (const RecipeEntry& entry : job_->entries())
            news_.readings.push_back({entry.data, std::string()});
    } else if (order_.kind == RecipeKind::download && (isWorthReading || news_.isCancelled)) {
        readBack();
        return;
    }
    tellEnd();
}

void RecipeWorker::readBack()
{
    news_.isReadingBack = true;
    news_.asOf = Clock::now();
    wordTimes_.clear();
    tellProgress();
    try {
        job_->readBack();
    } catch (const Failure& failure) {
        for (std::size_t i = 0; i < order_.entries.size(); ++i)
            news_.readings.push_back({{}, failure.what()});
        tellEnd();
    }
}

bool RecipeWorker::cancel(long long number)
{
    if (!job_ || order_.number != number)
        return false;
    news_.isCancelled = true;
    return true;
}

void RecipeWorker::heard(const Transmission& transmission)
{
    if (transmission.isRead() && transmission.verdict == replyAccepted)
        wordTimes_.add(transmission.request, transmission.asOf);
}

void RecipeWorker::end(const std::string& reason)
{
    if (!job_)
        return;
    news_.progress = job_->progress();
    if (!news_.isReadingBack || order_.kind == RecipeKind::read)
        news_.problems = {reason};
    else // all was moved; what the controller holds is not known
        news_.readings.assign(order_.entries.size(), {{}, reason});
    tellEnd();
}

void RecipeWorker::tellProgress()
{
    if (!job_)
        return;
    news_.progress = job_->progress();
    emit told(news_);
}

void RecipeWorker::tellEnd()
{
    progressTimer_.stop();
    disconnect(hearing_);
    if (news_.isCancelled) {
        for (std::string& problem : news_.problems)
            nameCancel(problem);
        for (RecipeReading& reading : news_.readings)
            nameCancel(reading.problem);
    }
    const Clock::time_point began = news_.asOf;
    for (std::size_t i = 0; i < news_.readings.size(); ++i) {
        const Address& address = order_.entries.at(i).item.address;
        news_.asOfEach.push_back(wordTimes_.of(address).value_or(began));
        // A poll's reply that came before it began may be told of later.
        news_.asOf = std::min(news_.asOf, news_.asOfEach.back());
    }
    news_.hasEnded = true;
    job_.reset();
    emit told(news_);
}

} // namespace dov417
