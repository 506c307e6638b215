#pragma once

#include <QKeySequence>
#include <QList>

#include <optional>
#include <vector>

#include "LumoCalc/text/Bilingual.h"

namespace lumo {

/// Everything the menus of a window can ask for.
enum class Command {
    newSheet,
    newWindow,
    closeWindow,
    exportSheet,
    print,
    settings,
    eraseAllContent,
    quit,
    undo,
    redo,
    cut,
    copy,
    paste,
    selectAll,
    copyAnswer,
    copySheetWithAnswers,
    find,
    replace,
    findNext,
    findPrevious,
    goToLine,
    nextSheet,
    previousSheet,
    toggleComment,
    clearSheet,
    zoomIn,
    zoomOut,
    actualSize,
    showPlots,
    showKeypad,
    showNamedValues,
    help,
    termsOfUse,
    about,
};

/// How a command appears in a menu.
struct CommandDefinition {
    Command command;
    Bilingual label;
    /// The platform's binding, when the platform has one for this kind of command.
    QKeySequence::StandardKey standardKey = QKeySequence::UnknownKey;
    /// The key shown in menus and help, bound beside the platform's own ones.
    const char* portableKey = nullptr;
    /// Shown with a check mark that follows a preference.
    bool checkable = false;
};

/// A menu of the menu bar; an empty entry stands for a separator.
struct MenuDefinition {
    Bilingual title;
    std::vector<std::optional<Command>> entries;
};

const std::vector<CommandDefinition>& allCommands();
const CommandDefinition& commandDefinition(Command command);
const std::vector<MenuDefinition>& menuBarLayout();

/// The key sequences of a command on this platform, the portable one first.
QList<QKeySequence> shortcutsFor(const CommandDefinition& definition);

} // namespace lumo
