#include <ovo/environment.h>
#include <ovo/shared_library.h>

#include "support/failure_of.h"
#include "support/process.h"

#include <gtest/gtest.h>

#include <cstdlib>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace fs = std::filesystem;
using ovo_test::failureOf;

namespace {

const std::string moduleName = OVO_TEST_MODULE; // the file name of the test library
const std::string modulePath = ovo_test::siblingFile(moduleName);
const std::string missingPath = (fs::temp_directory_path() / "ovo-no-such-library.so").string();

int answerOf(const ovo::SharedLibrary& library)
{
    return reinterpret_cast<int (*)()>(library.getProc("ovo_test_answer"))();
}

void setVariable(const char* name, const char* value)
{
#if defined(_WIN32)
    SetEnvironmentVariableA(name, value);
#else
    setenv(name, value, 1);
#endif
}

} // namespace

TEST(SharedLibrary, FindsWhatTheLibraryExportsAndNothingElse)
{
    const ovo::SharedLibrary library(modulePath);
    EXPECT_TRUE(library.isLoaded());
    EXPECT_TRUE(library.hasProc("ovo_test_answer"));
    EXPECT_EQ(answerOf(library), 42);
    EXPECT_EQ(library.getProc("ovo_test_question"), nullptr);
    EXPECT_FALSE(library.hasProc("ovo_test_question"));

    const ovo::SharedLibrary nothing;
    EXPECT_FALSE(nothing.isLoaded());
    EXPECT_EQ(nothing.getProc("malloc"), nullptr) << "not even the process's own symbols";
    EXPECT_FALSE(nothing.hasProc("ovo_test_answer"));
}

TEST(SharedLibrary, AFailedLoadSaysWhyAndMayBeTriedAgain)
{
    ovo::SharedLibrary library;
    EXPECT_FALSE(library.tryLoad(missingPath));
    EXPECT_FALSE(library.isLoaded());
    try {
        library.load(missingPath);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), "::LoadLibrary( '" + missingPath + "' ) failed: 126");
        EXPECT_NE(failureOf([&] { std::rethrow_if_nested(e); }), "") << "the loader's reason, nested";
    }
    EXPECT_FALSE(library.isLoaded());
    EXPECT_TRUE(library.tryLoad(modulePath));
    EXPECT_EQ(answerOf(library), 42);
    EXPECT_NE(failureOf([] { ovo::SharedLibrary{missingPath}; }), "");
}

TEST(SharedLibrary, OneLibraryForLife)
{
    ovo::SharedLibrary library(modulePath);
    EXPECT_EQ(failureOf([&] { library.load(modulePath); }), "already loaded");
    EXPECT_TRUE(library.tryLoad(missingPath)) << "loaded already, the path is not looked at";
    EXPECT_EQ(answerOf(library), 42);
}

// The directory is the process's: it stays changed after the constructor, and the path is
// resolved in it ("./": a bare name would be looked up in the library path).
TEST(SharedLibrary, TheTwoStringConstructorLoadsFromTheDirectoryItChangesTo)
{
    const fs::path before = fs::current_path();
    const fs::path directory = fs::path(modulePath).parent_path();
    fs::current_path(fs::temp_directory_path());
    {
        const ovo::SharedLibrary library("./" + moduleName, directory.string());
        EXPECT_EQ(fs::current_path(), directory);
        EXPECT_EQ(answerOf(library), 42);
    }
    fs::current_path(before);
}

TEST(Environment, SetEmptyAndMissingVariables)
{
    setVariable("OVO_TEST_VARIABLE", "some value");
    setVariable("OVO_TEST_EMPTY", "");
    EXPECT_TRUE(ovo::environment::has("OVO_TEST_VARIABLE"));
    EXPECT_EQ(ovo::environment::get("OVO_TEST_VARIABLE"), "some value"); // no NUL at the end
    EXPECT_EQ(ovo::environment::get("OVO_TEST_VARIABLE", "default"), "some value");
    EXPECT_TRUE(ovo::environment::has("OVO_TEST_EMPTY"));
    EXPECT_EQ(ovo::environment::get("OVO_TEST_EMPTY", "default"), "");

    EXPECT_FALSE(ovo::environment::has("OVO_TEST_NOT_SET"));
    EXPECT_EQ(ovo::environment::get("OVO_TEST_NOT_SET", "default"), "default");
    EXPECT_EQ(failureOf([] { ovo::environment::get("OVO_TEST_NOT_SET"); }), "not found 'OVO_TEST_NOT_SET'");
}
