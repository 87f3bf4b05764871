// Window mode: the window is a module of its own (Qt, Avahi), so that a print server needs neither
// to run the filter.
//
// The module is lib/tintoral/libtintoral-window.so beside the executable (support/resources.h) and
// exports
//
//   extern "C" int applicationMain(int argc, char** argv);
//
// which runs the window until it is closed and returns the exit status.
#pragma once

namespace tintoral {

// Answers "--help" and "--version" on standard output, or else opens the window; the first of them
// counts. An option that neither the program nor the toolkit knows is one line on standard error
// and status 2, before anything is loaded. Result: the exit status.
//
// Without a display (none of DISPLAY, WAYLAND_DISPLAY and QT_QPA_PLATFORM is set) the module is not
// even loaded, since the toolkit aborts then; without a usable module there is nothing to call.
// Each is one line on standard error and status 1. A display that is named but cannot be opened is
// for the module to report.
int startWindow(int argc, char** argv);

}  // namespace tintoral
