#include <ovo/environment.h>
#include <ovo/shared_library.h>
#include <ovo/version.h>

#include "support/failure_of.h"
#include "support/process.h"

#include <gtest/gtest.h>

#include <cstdlib>

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

} // namespace

TEST(SharedLibrary, FindsWhatTheLibraryExportsAndNothingElse)
{
    const ovo::SharedLibrary library(modulePath);
    EXPECT_TRUE(library.isLoaded() && library.hasProc("ovo_test_answer") && !library.hasProc("ovo_test_question"));
    EXPECT_EQ(answerOf(library), 42);
    EXPECT_EQ(library.getProc("ovo_test_question"), nullptr);
}

// A library that failed to load may be loaded again; one that loaded holds for life.
TEST(SharedLibrary, AFailedLoadSaysWhyAndMayBeTriedAgainAndALoadedOneIsLoadedForLife)
{
    ovo::SharedLibrary library;
    try {
        library.load(missingPath);
        FAIL() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(failureOf([&] { std::rethrow_if_nested(e); }), "") << "the loader's reason, nested";
    }
    EXPECT_TRUE(!library.isLoaded() && library.tryLoad(modulePath));
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
    const ovo::SharedLibrary library("./" + moduleName, directory.string());
    EXPECT_EQ(fs::current_path(), directory);
    EXPECT_EQ(answerOf(library), 42);
    fs::current_path(before);
}

// Empty and missing variables and their defaults (as failed loads): the parity scenario.
TEST(Environment, AVariableReadsWholeAndAMissingOneSaysSo)
{
    EXPECT_EQ(ovo::environment::get("PATH"), std::getenv("PATH")); // no NUL at the end
    EXPECT_EQ(failureOf([] { ovo::environment::get("OVO_TEST_NOT_SET"); }), "not found 'OVO_TEST_NOT_SET'");
}

// The library that runs is the one these headers came with.
TEST(Version, LoadedLibraryMatchesHeaders) { EXPECT_EQ(std::string(ovo::libraryVersion()), OVO_VERSION_STRING); }
