// What `sylvora` makes of its command line: worlds as plain arguments, --background, and the
// options that print and exit, before and after Qt has taken its own.

#include <gtest/gtest.h>

#include "app/shell/commandline.h"

using namespace sylvora::app;
using Action = LaunchRequest::Action;

TEST(CommandLine, OptionsWorldsAndUnknownOptions) {
    struct Case {
        QStringList arguments;
        bool qtHasParsed;
        Action action;
        bool background;
        QStringList documents;
    };
    const Case cases[] = {
        {{}, true, Action::Run, false, {}},
        {{"A.sylvora", "B.sylvora"}, true, Action::Run, false, {"A.sylvora", "B.sylvora"}},
        {{"--background"}, true, Action::Run, true, {}},
        {{"A.sylvora", "--background"}, true, Action::Run, true, {"A.sylvora"}},
        {{"--help", "A.sylvora"}, false, Action::Help, false, {}},
        {{"-h"}, true, Action::Help, false, {}},
        {{"--version"}, false, Action::Version, false, {}},
        {{"A.sylvora", "-v"}, true, Action::Version, false, {"A.sylvora"}},
        {{"--bogus"}, false, Action::Usage, false, {}},
        {{"--bogus"}, true, Action::Usage, false, {}},
        // Qt's own single-dash options are Qt's until it has taken them; what is left is unknown.
        {{"-style", "fusion"}, false, Action::Run, false, {"fusion"}},
        {{"-x"}, true, Action::Usage, false, {}},
        {{"--", "--help", "-x.sylvora"}, true, Action::Run, false, {"--help", "-x.sylvora"}},
        {{"-"}, true, Action::Run, false, {"-"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments.join(QLatin1Char(' ')).toStdString());
        const LaunchRequest request = parseCommandLine(c.arguments, c.qtHasParsed);
        EXPECT_EQ(request.action, c.action);
        if (c.action == Action::Usage) {
            EXPECT_EQ(request.unknownOption, c.arguments.back());
            continue;
        }
        if (c.action != Action::Run) continue;
        EXPECT_EQ(request.background, c.background);
        EXPECT_EQ(request.documents, c.documents);
    }
    EXPECT_TRUE(usageText().contains(QLatin1String("--background")));
}
