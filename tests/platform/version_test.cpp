#include <ovo/version.h>

#include <gtest/gtest.h>

// The library that runs is the one these headers came with.
TEST(Version, LoadedLibraryMatchesHeaders) { EXPECT_EQ(std::string(ovo::libraryVersion()), OVO_VERSION_STRING); }
