// Writes the seed corpora of the fuzz targets, so that none of them needs committed binaries:
//
//   sylvora-fuzz-seeds OUT [EXAMPLE_PACKAGE] [HAND_WRITTEN_FOLDER]
//
// OUT/loader       valid worlds in XML and binary form with their sounds and picture, the example
//                  world's description with small stand-ins for its sounds and picture, and every
//                  hand-written plist of HAND_WRITTEN_FOLDER/loader packaged with sounds and a picture
// OUT/alias        aliases of the fixtures and of a package that is gone
// OUT/preferences  settings files saved by Preferences itself
// OUT/decoder      short sounds in every format libsndfile writes, and the heads of the example's

#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/files/alias.h"
#include "core/package/plist.h"
#include "core/prefs/preferences.h"
#include "core/world/world.h"
#include "seedmaker/soundseeds.h"
#include "support/packagebundle.h"
#include "support/scratch.h"

using namespace sylvora;
using fuzz::BundleFile;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t EXAMPLE_SOUND_HEAD_BYTES = 16 * 1024;

std::string readAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void save(const fs::path& folder, const std::string& name, const std::string& bytes) {
    fs::create_directories(folder);
    fuzz::Scratch::writeFile((folder / name).string(), bytes.data(), bytes.size());
}

std::string picture(const char* format, int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(QColor(40, 90, 60, 200));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes.toStdString();
}

PlistPtr loopEntry(const char* file, double volume) {
    PlistPtr entry = plistNewDict();
    plistSetString(entry.get(), World::SOUND_FILENAME_KEY, QString::fromUtf8(file));
    plistSetDouble(entry.get(), World::LOOP_SOUND_VOLUME_KEY, volume);
    return entry;
}

PlistPtr environmentEntry(const char* file, int groupIndex, double adjust) {
    PlistPtr entry = plistNewDict();
    plistSetString(entry.get(), World::SOUND_FILENAME_KEY, QString::fromUtf8(file));
    plistSetInt32(entry.get(), World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY, 1);
    plistSetInt32(entry.get(), World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY, 2);
    plistSetInt32(entry.get(), World::ENVIRONMENT_SOUND_GROUP_INDEX_KEY, groupIndex);
    if (adjust >= 0) plistSetDouble(entry.get(), World::ENVIRONMENT_SOUND_OLD_VOLUME_ADJUST_KEY, adjust);
    else {
        plistSetDouble(entry.get(), World::ENVIRONMENT_SOUND_MIN_VOLUME_KEY, 0.2);
        plistSetDouble(entry.get(), World::ENVIRONMENT_SOUND_MAX_VOLUME_KEY, 0.9);
    }
    return entry;
}

// A world that uses every key of the description.
PlistPtr fullWorld() {
    PlistPtr root = plistNewDict();
    plistSetString(root.get(), World::NAME_KEY, QStringLiteral("Seed World"));
    plistSetString(root.get(), World::AUTHOR_KEY, QStringLiteral("Seeds"));
    plistSetString(root.get(), World::DESCRIPTION_KEY, QStringLiteral("Every key once."));
    plistSetInt32(root.get(), World::LOOP_SOUNDS_CROSSFADE_DURATION_KEY, 1);
    plistSetString(root.get(), World::PICTURE_FILENAME_KEY, QStringLiteral("Picture.png"));
    PlistPtr groups = plistNewArray();
    for (const char* name : {"Birds", "Water"}) {
        PlistPtr group = plistNewDict();
        plistSetString(group.get(), World::GROUP_NAME_KEY, QString::fromUtf8(name));
        plistSetInt32(group.get(), World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY, 1);
        plistSetInt32(group.get(), World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY, 3);
        plistAppend(groups.get(), std::move(group));
    }
    plistSetNode(root.get(), World::GROUPS_ARRAY_KEY, std::move(groups));
    PlistPtr loops = plistNewArray();
    plistAppend(loops.get(), loopEntry("a.wav", 0.8));
    plistAppend(loops.get(), loopEntry("b.flac", 1.0));
    plistSetNode(root.get(), World::LOOP_SOUNDS_ARRAY_KEY, std::move(loops));
    PlistPtr environment = plistNewArray();
    plistAppend(environment.get(), environmentEntry("c.wav", 0, 0.5));
    plistAppend(environment.get(), environmentEntry("d.ogg", 1, -1));
    plistAppend(environment.get(), environmentEntry("c.wav", -1, -1));
    plistSetNode(root.get(), World::ENVIRONMENT_SOUNDS_ARRAY_KEY, std::move(environment));
    return root;
}

void writeLoaderSeeds(const fs::path& out, const std::string& scratch, const fs::path& example,
                      const fs::path& plists) {
    const std::string wav = fuzz::encodeTinySound(scratch, "wav");
    const std::string flac = fuzz::encodeTinySound(scratch, "flac");
    const std::string ogg = fuzz::encodeTinySound(scratch, "ogg");
    const PlistPtr world = fullWorld();
    const std::vector<BundleFile> sounds = {{"Loop Sounds/a.wav", wav},
                                            {"Loop Sounds/b.flac", flac},
                                            {"Environment Sounds/c.wav", wav},
                                            {"Environment Sounds/d.ogg", ogg},
                                            {"Picture.png", picture("PNG", 4, 3)}};
    for (const auto& [name, bytes] : {std::pair{"world-xml", plistToXml(world.get()).toStdString()},
                                      std::pair{"world-binary", plistToBinary(world.get()).toStdString()}}) {
        std::vector<BundleFile> files{{"data.plist", bytes}};
        files.insert(files.end(), sounds.begin(), sounds.end());
        save(out, name, fuzz::PackageBundle::pack(files));
    }

    if (fs::is_regular_file(example / "data.plist")) {
        const std::string description = readAll(example / "data.plist");
        std::vector<BundleFile> files{{"data.plist", description}};
        // The example's own sounds run to megabytes; small stand-ins of the same names and kind
        // reach the same code.
        for (const char* folder : {"Loop Sounds", "Environment Sounds"})
            for (const fs::directory_entry& entry : fs::directory_iterator(example / folder))
                files.push_back({std::string(folder) + "/" + entry.path().filename().string(), flac});
        const PlistPtr root = plistParse(QByteArray::fromStdString(description));
        if (const auto pictureName = plistGetString(root.get(), World::PICTURE_FILENAME_KEY))
            files.push_back({pictureName->toStdString(), picture("PNG", 16, 9)});
        save(out, "example-world", fuzz::PackageBundle::pack(files));
        files[0].bytes = plistToBinary(root.get()).toStdString();
        save(out, "example-world-binary", fuzz::PackageBundle::pack(files));
    }

    if (fs::is_directory(plists))
        for (const fs::directory_entry& entry : fs::directory_iterator(plists)) {
            if (entry.path().extension() != ".plist") continue;
            save(out, "odd-" + entry.path().stem().string(),
                 fuzz::PackageBundle::pack({{"data.plist", readAll(entry.path())},
                                            {"Loop Sounds/a.wav", wav},
                                            {"Environment Sounds/a.wav", wav},
                                            {"Picture.jpg", picture("JPG", 3, 3)}}));
        }
}

AliasHandle aliasOf(const std::string& path) {
    AliasHandle alias;
    FSRef ref;
    if (FSPathMakeRef(QString::fromStdString(path), ref) == noErr) FSNewAlias(ref, alias);
    return alias;
}

void writeStoreSeeds(const fs::path& out) {
    const std::string fixtures = fuzz::Scratch::fixtures();
    const std::vector<std::string> targets = {fixtures + "/Alps.sylvora", fixtures + "/beach.sylvora",
                                              fixtures + "/Unnamed.sylvora", fixtures + "/tone.wav"};
    for (std::size_t i = 0; i < targets.size(); ++i)
        if (const AliasHandle alias = aliasOf(targets[i]))
            save(out / "alias", "fixture-" + std::to_string(i), alias->toBytes().toStdString());
    const std::string gone = fuzz::Scratch::work() + "/Gone.sylvora";
    fs::create_directories(gone);
    if (const AliasHandle alias = aliasOf(gone)) save(out / "alias", "missing", alias->toBytes().toStdString());
    fs::remove(gone);

    const std::string file = fuzz::Scratch::work() + "/seed.ini";
    for (std::size_t count = 1; count <= 3; ++count) {
        fs::remove(file);
        Preferences prefs(QString::fromStdString(file));
        prefs.setMasterVolume(0.25 * static_cast<double>(count));
        for (std::size_t i = 0; i < count; ++i)
            if (const AliasHandle alias = aliasOf(targets[i]))
                prefs.updateKnownWorlds(alias.get(), i == 2 ? QString() : QStringLiteral("World %1").arg(i));
        if (const AliasHandle last = aliasOf(targets[0])) prefs.setLastWorldAlias(last.get());
        prefs.savePreferences();
        save(out / "preferences", "saved-" + std::to_string(count), readAll(file));
    }
}

void writeDecoderSeeds(const fs::path& out, const std::string& scratch, const fs::path& example) {
    for (const fuzz::EncodedSound& sound : fuzz::encodeSoundSeeds(scratch)) save(out, sound.name, sound.bytes);
    if (!fs::is_directory(example)) return;
    for (const char* folder : {"Loop Sounds", "Environment Sounds"})
        for (const fs::directory_entry& entry : fs::directory_iterator(example / folder)) {
            std::string head = readAll(entry.path());
            head.resize(std::min(head.size(), EXAMPLE_SOUND_HEAD_BYTES));
            save(out, "example-head-" + entry.path().stem().string(), head);
        }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUT [EXAMPLE_PACKAGE] [HAND_WRITTEN_FOLDER]\n", argv[0]);
        return 2;
    }
    QCoreApplication app(argc, argv);
    const fs::path out = argv[1];
    const fs::path example = argc > 2 ? fs::path(argv[2]) : fs::path();
    const fs::path plists = argc > 3 ? fs::path(argv[3]) / "loader" : fs::path();
    fuzz::Scratch::makeFixtures();
    fuzz::Scratch::clear();
    const std::string scratch = fuzz::Scratch::work();

    writeLoaderSeeds(out / "loader", scratch, example, plists);
    writeStoreSeeds(out);
    writeDecoderSeeds(out / "decoder", scratch, example);
    fuzz::Scratch::clear();
    fs::remove(scratch);
    return 0;
}
