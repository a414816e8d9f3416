// What the demo does with the controller, over and over: writes of every register type, each read
// back, and a recipe to the controller and back again.
#ifndef DOV417_TOOL_DEMO_ROUND_H
#define DOV417_TOOL_DEMO_ROUND_H

#include <functional>
#include <string>
#include <vector>

#include "session/recipe_job.h"
#include "session/session.h"
#include "session/write_job.h"

namespace dov417 {

class DemoRound {
public:
    DemoRound(const Library& library, Session& session, std::function<void()> done);

    void start();
    bool isUnderWay() const;
    int completed() const;
    std::string status() const;
    const std::vector<std::string>& problems() const;

private:
    enum class Stage {
        pause,
        writes,
        download,
        upload
    };

    void writesDone();
    void recipeDone();
    void compareRecipes();

    const Library& library_;
    std::function<void()> done_;
    Stage stage_ = Stage::pause;
    int completed_ = 0;
    int confirmed_ = 0;
    int recipeWords_ = 0;
    std::vector<std::string> problems_;
    std::vector<RecipeEntry> sentRecipe_;
    WriteJob writeJob_;
    RecipeJob recipeJob_;
};

} // namespace dov417

#endif
