#include <ovo/environment.h>
#include <ovo/shared_library.h>

#include "support/process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace fs = std::filesystem;

namespace {

const std::string moduleName = OVO_TEST_MODULE; // the file name of the test library
using Answer = int (*)();

std::string modulePath() { return ovo_test::siblingFile(moduleName); }

std::string missingPath() { return (fs::temp_directory_path() / "ovo-no-such-library.so").string(); }

} // namespace

TEST(SharedLibrary, LoadsAndFindsFunctions)
{
    ovo::SharedLibrary library(modulePath());
    EXPECT_TRUE(library.isLoaded());
    ASSERT_TRUE(library.hasProc("ovo_test_answer"));
    EXPECT_EQ(reinterpret_cast<Answer>(library.getProc("ovo_test_answer"))(), 42);
    EXPECT_EQ(library.getProc("ovo_test_question"), nullptr);
    EXPECT_FALSE(library.hasProc("ovo_test_question"));
}

TEST(SharedLibrary, NothingLoaded)
{
    ovo::SharedLibrary library;
    EXPECT_FALSE(library.isLoaded());
    EXPECT_EQ(library.getProc("ovo_test_answer"), nullptr) << "a null module finds nothing";
    EXPECT_EQ(library.getProc("malloc"), nullptr) << "not even the process's own symbols";
    EXPECT_FALSE(library.hasProc("ovo_test_answer"));
}

TEST(SharedLibrary, FailedLoadsAndTheirReasons)
{
    ovo::SharedLibrary library;
    EXPECT_FALSE(library.tryLoad(missingPath()));
    EXPECT_FALSE(library.isLoaded());
    try {
        library.load(missingPath());
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "::LoadLibrary( '" + missingPath() + "' ) failed: 126");
        try {
            std::rethrow_if_nested(e);
            FAIL() << "no reason nested";
        } catch (const std::runtime_error& reason) {
            EXPECT_FALSE(std::string(reason.what()).empty());
        }
    }
    EXPECT_FALSE(library.isLoaded());
    library.load(modulePath()); // a later load may try again
    EXPECT_TRUE(library.isLoaded());
    EXPECT_THROW(ovo::SharedLibrary{missingPath()}, std::runtime_error);
}

TEST(SharedLibrary, OneLibraryForLife)
{
    ovo::SharedLibrary library(modulePath());
    try {
        library.load(modulePath());
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "already loaded");
    }
    EXPECT_TRUE(library.tryLoad(missingPath())) << "loaded already, the path is not looked at";
    EXPECT_EQ(reinterpret_cast<Answer>(library.getProc("ovo_test_answer"))(), 42);
}

TEST(SharedLibrary, TwoStringConstructorChangesTheProcessDirectory)
{
    // In a child process, so that this suite's own directory stays put. The library is
    // named relative to the new directory ("./": on Linux a bare name is looked up in the
    // library path, as dlopen does).
    const fs::path directory = fs::path(modulePath()).parent_path();
    ovo_test::TempDir out;
    const std::string report = (out.path() / "report.txt").string();
    const int status = ovo_test::runProgram(ovo_test::siblingProgram("chdir_loader"),
                                            {directory.string(), "./" + moduleName}, report);
    EXPECT_EQ(status, 0);
    const std::string text = ovo_test::readFile(report);
    const std::string firstLine = text.substr(0, text.find_first_of("\r\n"));
    EXPECT_EQ(fs::path(firstLine), directory);
    EXPECT_NE(text.find("\n42"), std::string::npos) << text;
}

TEST(Environment, SetAndMissingVariables)
{
#if defined(_WIN32)
    _putenv_s("OVO_TEST_VARIABLE", "some value");
#else
    setenv("OVO_TEST_VARIABLE", "some value", 1);
#endif
    EXPECT_TRUE(ovo::environment::has("OVO_TEST_VARIABLE"));
    const std::string value = ovo::environment::get("OVO_TEST_VARIABLE");
    EXPECT_EQ(value, "some value");
    EXPECT_EQ(value.size(), 10u) << "no terminating NUL";
    EXPECT_EQ(ovo::environment::get("OVO_TEST_VARIABLE", "default"), "some value");

    EXPECT_FALSE(ovo::environment::has("OVO_TEST_NOT_SET"));
    EXPECT_EQ(ovo::environment::get("OVO_TEST_NOT_SET", "default"), "default");
    EXPECT_EQ(ovo::environment::get("OVO_TEST_NOT_SET", ""), "");
    try {
        ovo::environment::get("OVO_TEST_NOT_SET");
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "not found 'OVO_TEST_NOT_SET'");
    }
}
