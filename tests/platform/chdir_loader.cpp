// A child process for the two-string SharedLibrary constructor:
//   chdir_loader DIRECTORY MODULE [WHAT]
// loads MODULE (relative to DIRECTORY) after changing there, and prints the current
// directory and whether the library's function answers.
#include <ovo/shared_library.h>

#include <filesystem>
#include <iostream>
#include <stdexcept>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    try {
        ovo::SharedLibrary library(argv[2], argv[1]);
        auto answer = reinterpret_cast<int (*)()>(library.getProc("ovo_test_answer"));
        std::cout << std::filesystem::current_path().string() << "\n" << (answer ? answer() : -1) << "\n";
        return 0;
    } catch (const std::exception& e) {
        std::cout << std::filesystem::current_path().string() << "\n" << e.what() << "\n";
        return 1;
    }
}
