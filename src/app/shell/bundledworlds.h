#pragma once

// Where worlds are found without being looked for: the worlds that come with Sylvora, and the
// person's own folder for the worlds they save.

#include <QString>

namespace sylvora::app {

// The bundled worlds: installed at <prefix>/share/sylvora/worlds beside the program's bin folder,
// or, for a program run from its build tree, the examples the build generated. Empty when neither
// is there.
QString bundledWorldsFolder();
// The world a first launch plays: "Evening Forest" among the bundled worlds, else the first of them
// by name; empty when there is none.
QString bundledFirstWorld();

// $XDG_DATA_HOME/sylvora/worlds (~/.local/share/sylvora/worlds): where Save As proposes to save when
// no other folder was used. Made by the first save there, not before.
QString userWorldsFolder();

}  // namespace sylvora::app
