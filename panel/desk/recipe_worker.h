// Recipes in the line's thread: one at a time, each ended once.
#ifndef DOV417_PANEL_RECIPE_WORKER_H
#define DOV417_PANEL_RECIPE_WORKER_H

#include <QObject>
#include <QTimer>
#include <memory>
#include <string>

#include "panel/desk/recipe_order.h"
#include "panel/desk/word_times.h"

namespace dov417 {

class RecipeWorker : public QObject {
    Q_OBJECT

public:
    // Why what was under way ends.
    static std::string cancelled();

    // How often it tells how far it has come.
    static constexpr std::chrono::milliseconds progressPause{100};

    explicit RecipeWorker(QObject* parent);

    // The session is to be there until end().
    void start(Session& session, const RecipeOrder& order);
    void refuse(const RecipeOrder& order, const std::string& why);
    bool isUnderWay() const
    {
        return job_ != nullptr;
    }
    // The order of this number is to end by hand: true where it is under way, and whoever called
    // ends all requests of the session then. A download reads back what the controller holds;
    // cancelled once more, it does not.
    bool cancel(long long number);
    // The session goes: what is under way ends with this reason.
    void end(const std::string& reason);

signals:
    void told(const dov417::RecipeNews& news);

private:
    void begin();
    void next();
    void readBack();
    void heard(const Transmission& transmission);
    void tellProgress();
    void tellEnd();

    RecipeOrder order_;
    RecipeNews news_;
    std::unique_ptr<RecipeJob> job_; // null: nothing is under way
    WordTimes wordTimes_;            // since the order, or the reading back, began
    QMetaObject::Connection hearing_;
    QTimer progressTimer_;
};

} // namespace dov417

#endif
