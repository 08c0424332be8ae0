#include "plugin/RecordingPath.h"

#include "toolkit/TmyString.h"

namespace orva::plugin {

namespace {

constexpr char kWaveExtension[] = "wav";
constexpr char kIfExtension[] = "if";
constexpr char kUnnamed[] = "unnamed";

toolkit::TmyString Without(const char* extension, const toolkit::TmyString& name) {
    return name.Extension() == extension ? name.StripExtension() : name;
}

} // namespace

std::string RecordingPath(const std::string& folder, const std::string& typedName, bool isAudio) {
    const toolkit::TmyString name = Without(kIfExtension, Without(kWaveExtension, typedName.c_str()));
    return folder + "\\" + (name.IsEmpty() ? kUnnamed : name.Text()) + (isAudio ? ".wav" : ".if.wav");
}

std::string OverwriteQuestion(const std::string& path) {
    constexpr char kQuestion[] = "already exists.\nDo you want to overwrite it?";
    return path.empty() ? std::string("File with that name ") + kQuestion
                        : "The file: \n" + path + "\n" + kQuestion;
}

} // namespace orva::plugin
