#pragma once

// Short sound files in every format the decoders meet, encoded by libsndfile from a generated tone.

#include <string>
#include <vector>

namespace sylvora::fuzz {

struct EncodedSound {
    std::string name;  // file name with its extension
    std::string bytes;
};

// Every format this libsndfile can write; formats it cannot write are left out.
std::vector<EncodedSound> encodeSoundSeeds(const std::string& scratchFolder);
// One small sound in the format `extension` names (wav, flac, ogg, aiff), for package seeds.
std::string encodeTinySound(const std::string& scratchFolder, const std::string& extension);

}  // namespace sylvora::fuzz
