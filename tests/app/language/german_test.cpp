// Under a German desktop the menus, the tray menu and the windows speak German: no word is left
// on them that only the English texts use. The English words are every word of the English texts
// that the German ones never use, so a text nobody translated, or forgot to mark for translation,
// still shows one of them.

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTabWidget>
#include <QXmlStreamReader>

#include "app/editor/worldeditorwindow.h"
#include "app/info/aboutwindow.h"
#include "app/info/getinfowindow.h"
#include "app/mixer/mixerwindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/commandline.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/support/appfixture.h"
#include "core/strings/stringresources.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

QSet<QString> wordsOf(const QString& text) {
    static const QRegularExpression word(QStringLiteral("\\p{L}{3,}"));
    QSet<QString> words;
    QString plain = text;
    plain.remove(QLatin1Char('&'));  // mnemonics
    for (const QRegularExpressionMatch& m : word.globalMatch(plain))
        words.insert(m.captured().toLower());
    return words;
}

// Every (context, source) pair of a translation file; lupdate names a class without its namespace.
QSet<QString> messagesIn(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QXmlStreamReader xml(&file);
    QSet<QString> messages;
    QString context;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == u"name")
            context = xml.readElementText().remove(QStringLiteral("sylvora::app::"));
        if (xml.name() == u"source")
            messages.insert(context + QLatin1Char('|') + xml.readElementText());
    }
    return messages;
}

// The words of a translation file's <source> or <translation> texts.
QSet<QString> wordsIn(const QString& tsFile, const QString& element) {
    QFile file(QStringLiteral(SYLVORA_TRANSLATIONS_DIR "/") + tsFile);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << tsFile.toStdString();
    QXmlStreamReader xml(&file);
    QSet<QString> words;
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == element)
            words.unite(wordsOf(xml.readElementText()));
    }
    EXPECT_FALSE(xml.hasError()) << tsFile.toStdString();
    return words;
}

void collectMenu(const QMenu& menu, QStringList& texts) {
    texts << menu.title();
    for (const QAction* action : menu.actions()) {
        texts << action->text() << action->toolTip();
        if (action->menu() != nullptr)
            collectMenu(*action->menu(), texts);
    }
}

void collectModel(const QAbstractItemModel& model, const QModelIndex& parent, QStringList& texts) {
    for (int column = 0; column < model.columnCount(parent); ++column)
        texts << model.headerData(column, Qt::Horizontal).toString();
    for (int row = 0; row < model.rowCount(parent); ++row) {
        for (int column = 0; column < model.columnCount(parent); ++column) {
            const QModelIndex index = model.index(row, column, parent);
            texts << index.data(Qt::DisplayRole).toString() << index.data(Qt::ToolTipRole).toString();
        }
        collectModel(model, model.index(row, 0, parent), texts);
    }
}

void collectWindow(QWidget& window, QStringList& texts) {
    texts << window.windowTitle();
    for (QWidget* w : window.findChildren<QWidget*>()) {
        texts << w->toolTip() << w->accessibleName();
        if (auto* label = qobject_cast<QLabel*>(w))
            texts << label->text();
        if (auto* button = qobject_cast<QAbstractButton*>(w))
            texts << button->text();
        if (auto* box = qobject_cast<QGroupBox*>(w))
            texts << box->title();
        if (auto* line = qobject_cast<QLineEdit*>(w))
            texts << line->placeholderText();
        if (auto* edit = qobject_cast<QPlainTextEdit*>(w))
            texts << edit->placeholderText();
        if (auto* tabs = qobject_cast<QTabWidget*>(w)) {
            for (int i = 0; i < tabs->count(); ++i)
                texts << tabs->tabText(i) << tabs->tabToolTip(i);
        }
        if (auto* view = qobject_cast<QAbstractItemView*>(w); view != nullptr && view->model() != nullptr)
            collectModel(*view->model(), {}, texts);
    }
}

class German : public AppTest {};

TEST_F(German, MenusWindowsAndHelpShowNoEnglishWordLeft) {
    QSet<QString> english = wordsIn(QStringLiteral("sylvora_en.ts"), QStringLiteral("translation"));
    english.unite(wordsIn(QStringLiteral("sylvora_de.ts"), QStringLiteral("source")));
    english.subtract(wordsIn(QStringLiteral("sylvora_de.ts"), QStringLiteral("translation")));
    ASSERT_TRUE(english.contains(QStringLiteral("sounds")) && english.contains(QStringLiteral("quit")));

    // A world with a sound, so the mixer and the editor's list have rows; its name is its own.
    ASSERT_EQ(doOpenDocsEvent({makeWorldPackage(QStringLiteral("Waldrand"))}), noErr);
    for (const CommandID command : {command::GET_INFO, command::EDIT_WORLD, command::MIXER, command::ABOUT})
        ASSERT_EQ(dispatchCommand(command), noErr);
    rebuildDockMenu();

    QStringList texts;
    collectMenu(*getContextMenu(), texts);
    collectMenu(*dockMenu, texts);
    for (QWidget* window :
         {static_cast<QWidget*>(gGetInfoWindow->getWindow()),
          static_cast<QWidget*>(gWorldEditorWindow->getWindow()),
          static_cast<QWidget*>(gMixerWindow->getWindow()), static_cast<QWidget*>(gAboutWindow->getWindow())})
        collectWindow(*window, texts);
    texts << usageText() << copyStatusDescription(dskFulErr) << copyStatusDescription(-12345);

    for (const QString& text : texts) {
        const QSet<QString> left = wordsOf(text).intersect(english);
        EXPECT_TRUE(left.isEmpty()) << text.toStdString()
                                    << " has English: " << QStringList(left.values()).join(' ').toStdString();
    }
    // Percentages (the editor's volumes, the mixer's levels) are written the German way.
    EXPECT_TRUE(texts.filter(QRegularExpression(QStringLiteral("\\d%"))).isEmpty())
        << texts.filter(QRegularExpression(QStringLiteral("\\d%"))).join(' ').toStdString();
    EXPECT_FALSE(texts.filter(QRegularExpression(QStringLiteral("^\\d+\u00a0%$"))).isEmpty());
    // It did look at German texts, not at empty ones.
    for (const char* german :
         {"&Datei", "Welt &bearbeiten", "Waldrand — Welteditor[*]", "Loop-Klänge", "Umgebungsklänge",
          "Über Sylvora", "Informationen zu Waldrand[*]", "Einschlaftimer"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(german))) << german;
    EXPECT_GT(texts.size(), 150);
}

// A text marked for translation anywhere in the program, also one no window shows in a test (the
// sound server's absence), has its German words.
TEST(GermanTables, HoldEveryTextMarkedForTranslation) {
    QProcess lupdate;
    const QString found = QDir::temp().filePath(
        QStringLiteral("sylvora-lupdate-%1.ts").arg(QCoreApplication::applicationPid()));
    lupdate.start(QStringLiteral(SYLVORA_LUPDATE),
                  {QStringLiteral("-silent"), QStringLiteral("-no-obsolete"),
                   QStringLiteral(SYLVORA_SOURCE_DIR), QStringLiteral("-ts"), found});
    ASSERT_TRUE(lupdate.waitForFinished(120000) && lupdate.exitCode() == 0)
        << lupdate.readAllStandardError().toStdString();
    const QSet<QString> marked = messagesIn(found);
    QFile::remove(found);
    ASSERT_GT(marked.size(), 100);
    const QSet<QString> german = messagesIn(QStringLiteral(SYLVORA_TRANSLATIONS_DIR "/sylvora_de.ts"));
    for (const QString& message : marked)
        EXPECT_TRUE(german.contains(message)) << message.toStdString();
}

// The program answers --help and an unknown option, before any window, in the language the
// desktop's variables name, LANGUAGE first.
TEST(GermanProgram, HelpAndUnknownOptionsFollowTheEnvironment) {
    struct Case {
        QStringList variables, arguments;
        int status;
        const char* firstLine;
    };
    const QList<Case> cases = {
        {{"LANG=de_DE.UTF-8"}, {"--help"}, 0, "Aufruf: sylvora [--background] [WELT.sylvora ...]"},
        {{"LANG=de_DE.UTF-8"}, {"--bogus"}, 2, "sylvora: unbekannte Option --bogus"},
        {{"LANG=en_GB.UTF-8", "LANGUAGE=de"}, {"-h"}, 0, "Aufruf: sylvora [--background] [WELT.sylvora ...]"},
        {{"LANG=fr_FR.UTF-8"}, {"--help"}, 0, "Usage: sylvora [--background] [WORLD.sylvora ...]"},
    };
    for (const Case& c : cases) {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANGUAGE"})
            environment.remove(QString::fromLatin1(name));
        for (const QString& variable : c.variables)
            environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QStringLiteral(SYLVORA_APP_PATH), c.arguments);
        ASSERT_TRUE(program.waitForFinished(20000));
        EXPECT_EQ(program.exitCode(), c.status) << c.variables.join(' ').toStdString();
        EXPECT_EQ(QString::fromUtf8(program.readAll()).section('\n', 0, 0), QString::fromUtf8(c.firstLine))
            << c.variables.join(' ').toStdString();
    }
}

// Numbers are written as the language writes them, with the German space before the percent sign.
TEST_F(German, PercentagesAndStatusNumbersFollowTheLocale) {
    EXPECT_EQ(percentText(80), QStringLiteral("80\u00a0%"));
    EXPECT_EQ(percentText(1500), QStringLiteral("1.500\u00a0%"));
    EXPECT_EQ(copyStatusDescription(dskFulErr), QStringLiteral("das Laufwerk ist voll (-34)"));
    EXPECT_EQ(copyStatusDescription(-12345), QStringLiteral("Fehler -12345"));
}

}  // namespace
