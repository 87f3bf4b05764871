#include "filter/window_loader.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "support/report.h"
#include "support/resources.h"

namespace tintoral {
namespace {

constexpr char kUsage[] =
    "usage: tintoral              opens the window on the ink levels of your printers\n"
    "       tintoral JOB USER TITLE COPIES OPTIONS [FILE]\n"
    "                             runs as a CUPS command filter: reads Clean, PrintSelfTestPage\n"
    "                             and ReportLevels, a line each, from FILE or standard input\n"
    "       tintoral --version    prints the version\n"
    "       tintoral --help       prints this text\n";

struct Option {
    std::string_view name;
    const char* text;
};

constexpr Option kOptions[] = {
    {"--help", kUsage},
    {"--version", "Tintoral " TINTORAL_VERSION "\n"},
};

// Options that the toolkit takes out of the window's arguments, with one dash or two; the value is
// the next argument, of some also what stands behind "=". A session manager starts us with
// "session".
constexpr std::string_view kToolkitOptions[] = {
    "display",         "geometry",           "icon",         "name",
    "platform",        "platformpluginpath", "plugin",       "platformtheme",
    "qwindowgeometry", "qwindowicon",        "qwindowtitle", "session",
    "style",           "stylesheet",         "title"};
constexpr std::string_view kToolkitSwitches[] = {"dograb", "nograb", "reverse", "widgetcount"};

enum class Toolkit { Nothing, Option, OptionAndValue };

// What the toolkit takes of this argument, which begins with a dash, and the next one.
Toolkit takenByToolkit(std::string_view argument) {
    argument.remove_prefix(argument.starts_with("--") ? 2 : 1);
    if (std::ranges::count(kToolkitSwitches, argument) > 0) return Toolkit::Option;
    const std::size_t end = argument.find('=');
    if (std::ranges::count(kToolkitOptions, argument.substr(0, end)) == 0) return Toolkit::Nothing;
    return end == std::string_view::npos ? Toolkit::OptionAndValue : Toolkit::Option;
}

constexpr int kUsageError = 2;

int refuse(std::string_view argument) {
    reportLine("unknown option '" + std::string(argument) + "'; 'tintoral --help' has the usage");
    return kUsageError;
}

// The exit status when one of the arguments is an option that ends the program.
std::optional<int> answerOptions(std::span<char* const> arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view argument = arguments[i];
        if (!argument.starts_with('-')) continue;
        if (const Toolkit takes = takenByToolkit(argument); takes != Toolkit::Nothing) {
            if (takes == Toolkit::OptionAndValue) ++i;
            continue;
        }
        const auto* option = std::ranges::find(kOptions, argument, &Option::name);
        if (option == std::end(kOptions)) return refuse(argument);
        std::fputs(option->text, stdout);
        return 0;
    }
    return std::nullopt;
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value != '\0';
}

bool displayIsNamed() {
    constexpr const char* kVariables[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return std::ranges::any_of(kVariables, isSet);
}

using ApplicationMain = int (*)(int argc, char** argv);

// Null when the module is missing, damaged or no module of this program; dlerror() then has the
// reason.
ApplicationMain loadApplicationMain() {
    const std::string path = moduleFolder() / "libtintoral-window.so";
    void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) return nullptr;
    return reinterpret_cast<ApplicationMain>(::dlsym(module, "applicationMain"));
}

int failed(const std::string& reason) {
    reportLine(reason);
    return 1;
}

int openWindow(int argc, char** argv) {
    if (!displayIsNamed()) {
        return failed(
            "there is no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not set)");
    }
    const ApplicationMain applicationMain = loadApplicationMain();
    if (applicationMain) return applicationMain(argc, argv);
    const char* reason = ::dlerror();
    return failed("the window module (package tintoral-window) cannot be loaded: " +
                  std::string(reason ? reason : "it has no entry point"));
}

}  // namespace

int startWindow(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    const auto status =
        answerOptions(arguments.subspan(std::min<std::size_t>(arguments.size(), 1)));
    return status ? *status : openWindow(argc, argv);
}

}  // namespace tintoral
