#include <ovo/version.h>

#include <gtest/gtest.h>

// The library that runs is the one these headers came with, and its numbers spell the text.
TEST(Version, LoadedLibraryMatchesHeaders)
{
    EXPECT_EQ(std::string(ovo::libraryVersion()), OVO_VERSION_STRING);
    EXPECT_EQ(OVO_VERSION_STRING, std::to_string(OVO_VERSION_MAJOR) + "." + std::to_string(OVO_VERSION_MINOR) + "." +
                                      std::to_string(OVO_VERSION_PATCH));
}
