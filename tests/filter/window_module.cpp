// Stands in for the window: tells that it was handed the arguments, and that its own C++ run-time
// works beside the executable's.
#include <sstream>
#include <stdexcept>

extern "C" int applicationMain(int argc, char** argv) try {
    std::ostringstream arguments;
    for (int i = 1; i < argc; ++i) arguments << argv[i] << ';';
    throw std::runtime_error(arguments.str());
} catch (const std::runtime_error& error) {
    return error.what() == std::string("x;y;") ? 42 : 1;
}
