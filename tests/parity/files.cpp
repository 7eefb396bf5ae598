// The daily file channel: directories, separators, suffixes; the files a message makes.
#include "observe.h"

#include <ovo/logger/file_log_channel.h>

#include <cctype>
#include <filesystem>
#include <memory>

namespace fs = std::filesystem;

struct MessageOnly : ovo::logger::IMessageFormatter {
    std::string format(const std::string&, const std::string& message) override { return message + "\n"; }
};

// Each date (1999-12-31) in the text as DATE.
std::string withoutDates(std::string text)
{
    const std::string shape = "9999-99-99";
    for (std::size_t at = 0; at + shape.size() <= text.size(); ++at) {
        std::size_t same = 0;
        while (same < shape.size() && (shape[same] == '9' ? std::isdigit(static_cast<unsigned char>(text[at + same]))
                                                          : text[at + same] == shape[same]))
            ++same;
        if (same == shape.size())
            text.replace(at, shape.size(), "DATE");
    }
    return text;
}

int main()
{
    // The channel's directory and suffix, and the directory made before it writes.
    const char* const cases[][3] = {{"scratch/none", "", ""}, {"scratch/logs", "", "logs"},
                                    {"scratch/logs/sub", "", "logs/sub"}, {"scratch\\logs\\sub", "", "logs/sub"},
                                    {"scratch/logs/", "", "logs"}, {"scratch/logs", "app", "logs"},
                                    {"scratch/logs", "a/b", "logs"}};
    for (const auto& row : cases) {
        const char *directory = row[0], *suffix = row[1], *made = row[2]; // a lambda takes no binding
        parity::show(std::string("directory '") + directory + "', suffix '" + suffix + "'", [&] {
            fs::remove_all("scratch");
            fs::create_directories(std::string("scratch/") + made);
            ovo::logger::FileLogChannel channel(directory, suffix);
            channel.setFormatter(std::make_shared<MessageOnly>());
            channel.write("parity", "one message");
            std::string seen = "files:"; // one at most, the day's date as DATE
            for (const auto& entry : fs::recursive_directory_iterator("scratch"))
                if (entry.is_regular_file())
                    seen += " " + entry.path().generic_string() + " (" + std::to_string(entry.file_size()) + ")";
            return withoutDates(seen);
        });
    }
}
