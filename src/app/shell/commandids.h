#pragma once

// Command IDs: four ASCII characters packed most significant first, as every menu item, tray item
// and window button carries them. One dispatcher acts on the number, so a command reaches the
// same code whether it came from a menu, a shortcut, the tray or a button.

#include <QString>
#include <QtGlobal>

namespace sylvora::app {

using CommandID = quint32;

constexpr CommandID fourCharCode(const char (&code)[5]) {
    return (static_cast<CommandID>(static_cast<unsigned char>(code[0])) << 24) |
           (static_cast<CommandID>(static_cast<unsigned char>(code[1])) << 16) |
           (static_cast<CommandID>(static_cast<unsigned char>(code[2])) << 8) |
           static_cast<CommandID>(static_cast<unsigned char>(code[3]));
}

// The four characters of a code, for diagnostics and tests.
QString commandIDString(CommandID id);

namespace command {
inline constexpr CommandID NEW = fourCharCode("new ");
inline constexpr CommandID OPEN = fourCharCode("open");
inline constexpr CommandID SAVE = fourCharCode("save");
inline constexpr CommandID SAVE_AS = fourCharCode("svas");
inline constexpr CommandID CLOSE = fourCharCode("clos");
inline constexpr CommandID QUIT = fourCharCode("quit");
inline constexpr CommandID ABOUT = fourCharCode("abou");
inline constexpr CommandID GET_INFO = fourCharCode("INFO");
inline constexpr CommandID TOGGLE_INFO = fourCharCode("TINF");  // the Get Info window's round button
inline constexpr CommandID EDIT_WORLD = fourCharCode("WEDT");
inline constexpr CommandID VOLUME_UP = fourCharCode("VOL+");
inline constexpr CommandID VOLUME_DOWN = fourCharCode("VOL-");
inline constexpr CommandID VOLUME_LEVEL_0 = fourCharCode("VOL0");  // VOL0 + n for level n, 0..7
inline constexpr CommandID UNDO = fourCharCode("undo");
inline constexpr CommandID REDO = fourCharCode("redo");
inline constexpr CommandID CUT = fourCharCode("cut ");
inline constexpr CommandID COPY = fourCharCode("copy");
inline constexpr CommandID PASTE = fourCharCode("past");
inline constexpr CommandID CLEAR = fourCharCode("clea");
inline constexpr CommandID SELECT_ALL = fourCharCode("sall");
inline constexpr CommandID HELP = fourCharCode("HELP");
inline constexpr CommandID APP_HELP = fourCharCode("AHLP");
inline constexpr CommandID SHOW = fourCharCode("SHOW");  // the tray's "Show"
inline constexpr CommandID PLAY_PAUSE = fourCharCode("PLAY");
inline constexpr CommandID MIXER = fourCharCode("MIXR");
}  // namespace command

}  // namespace sylvora::app
