#pragma once

// The Get Info and About windows' own pictures (the round button's icon, the title graphic).

namespace sylvora::app {

// [main] Makes them available under :/info and :/images; safe to call any number of times.
void initInfoResources();

}  // namespace sylvora::app
