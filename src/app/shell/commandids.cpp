#include "app/shell/commandids.h"

namespace sylvora::app {

QString commandIDString(CommandID id) {
    QString text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += QChar(static_cast<char16_t>((id >> shift) & 0xFF));
    }
    return text;
}

}  // namespace sylvora::app
