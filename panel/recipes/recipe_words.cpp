#include "panel/recipes/recipe_words.h"

#include <QCoreApplication>
#include <QStringList>
#include <algorithm>

namespace dov417 {

namespace {

struct RecipeTexts {
    Q_DECLARE_TR_FUNCTIONS(RecipeTexts)
};

int countOf(const std::vector<RecipeRow>& rows, RecipeFate fate)
{
    return static_cast<int>(std::count_if(
        rows.begin(), rows.end(), [fate](const RecipeRow& row) { return row.fate == fate; }));
}

// "40 of 122 words and 3 of 10 bits"; empty where nothing was to be moved.
QString doneText(const RecipeProgress& progress)
{
    QStringList parts;
    if (progress.allWords > 0)
        parts.append(RecipeTexts::tr("%1 of %2 words").arg(progress.words).arg(progress.allWords));
    if (progress.allBits > 0)
        parts.append(RecipeTexts::tr("%1 of %2 bits").arg(progress.bits).arg(progress.allBits));
    return parts.join(RecipeTexts::tr(" and "));
}

QString brokenText(const RecipeNews& news)
{
    QStringList problems;
    for (const std::string& problem : news.problems)
        problems.append(QString::fromStdString(problem));
    constexpr int maxProblems = 3;
    const int more = problems.size() - maxProblems;
    problems = problems.mid(0, maxProblems);
    if (more > 0)
        problems.append(RecipeTexts::tr("and %n more", nullptr, more));
    QString text =
        RecipeTexts::tr("\u2717 It was broken off: %1.").arg(problems.join(QStringLiteral("; ")));
    const QString done = doneText(news.progress);
    const bool isAnyRead =
        std::any_of(news.readings.begin(), news.readings.end(),
                    [](const RecipeReading& reading) { return reading.problem.empty(); });
    if (news.kind == RecipeKind::download)
        text += QLatin1Char(' ') +
                (done.isEmpty() ? RecipeTexts::tr("Nothing had been confirmed.")
                                : RecipeTexts::tr("%1 had been confirmed.").arg(done)) +
                (!isAnyRead ? QString()
                            : QLatin1Char(' ') +
                                  RecipeTexts::tr("The rows say what the controller holds."));
    else if (!done.isEmpty())
        text += QLatin1Char(' ') +
                RecipeTexts::tr("%1 had been read; the buffer is as it was.").arg(done);
    return text;
}

} // namespace

QString recipeProgressText(const RecipeNews& news)
{
    const QString done = doneText(news.progress);
    const QString which = done.isEmpty() ? QString() : QStringLiteral(": ") + done;
    switch (news.kind) {
    case RecipeKind::read:
        return RecipeTexts::tr("The controller is being read \u2026");
    case RecipeKind::upload:
        return RecipeTexts::tr("The controller is being read%1 \u2026").arg(which);
    case RecipeKind::download:
        if (news.isCancelled)
            return RecipeTexts::tr("It was cancelled%1; what the controller holds is being read "
                                   "\u2026")
                .arg(which);
        return news.isReadingBack
                   ? RecipeTexts::tr("Everything was taken%1; it is being read back \u2026")
                         .arg(which)
                   : RecipeTexts::tr("The buffer is being written%1 \u2026").arg(which);
    }
    return QString();
}

QString recipeEndText(const RecipeNews& news, const std::vector<RecipeRow>& rows, bool isOfLine)
{
    if (!news.problems.empty())
        return brokenText(news);
    if (!isOfLine)
        return RecipeTexts::tr("? Another line was opened meanwhile; what was moved before is not "
                               "shown here.");
    const int unknown = countOf(rows, RecipeFate::unknown);
    if (news.kind != RecipeKind::download)
        return unknown == 0 ? RecipeTexts::tr("\u2713 %n value(s) were read.", nullptr,
                                              countOf(rows, RecipeFate::read))
                            : RecipeTexts::tr("\u2717 %n value(s) could not be read; the rows say "
                                              "why.",
                                              nullptr, unknown);
    // It may be cancelled when its last word was confirmed: then rows say what is held.
    const int different = countOf(rows, RecipeFate::different) + countOf(rows, RecipeFate::notHeld);
    if (unknown + different == 0)
        return RecipeTexts::tr("\u2713 %n value(s) were written and read back.", nullptr,
                               countOf(rows, RecipeFate::written) +
                                   countOf(rows, RecipeFate::held));
    return RecipeTexts::tr("\u2717 The controller has taken everything, but %n value(s) read back "
                           "otherwise or not at all; the rows say which.",
                           nullptr, unknown + different);
}

} // namespace dov417
