// A child made by fork (without exec) that runs a function of the test and ends with its
// result as exit status: a real process, started at a hundredth of a program's cost. It
// talks back through a pipe: tell() in the child, heard() in the parent. POSIX only.
#ifndef OVO_TESTS_SUPPORT_FORKED_PROCESS_H
#define OVO_TESTS_SUPPORT_FORKED_PROCESS_H

#include <csignal>
#include <functional>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ovo_test {

class ForkedProcess {
public:
    explicit ForkedProcess(const std::function<int()>& body)
    {
        if (pipe2(pipe_, O_CLOEXEC) != 0 || (pid_ = fork()) < 0)
            throw std::runtime_error("cannot fork");
        if (pid_ == 0) {
            close(pipe_[0]);
            toParent() = pipe_[1];
            int status = 2; // an exception ends it too: never back into the test
            try {
                status = body();
            } catch (...) {
            }
            _exit(status);
        }
        close(pipe_[1]);
    }
    ~ForkedProcess()
    {
        if (running_)
            kill();
        close(pipe_[0]);
    }
    ForkedProcess(const ForkedProcess&) = delete;
    ForkedProcess& operator=(const ForkedProcess&) = delete;

    // In the child: sends the text to the parent.
    static void tell(const std::string& text)
    {
        if (write(toParent(), text.data(), text.size()) < 0)
            _exit(3);
    }
    // In the parent: up to `bytes` of what the child tells, or all of it until it ends.
    std::string heard(std::size_t bytes = std::string::npos)
    {
        std::string text;
        char c;
        while (text.size() < bytes && read(pipe_[0], &c, 1) == 1)
            text += c;
        return text;
    }
    // Its exit status, or 128 and the signal that ended it.
    int wait()
    {
        int status = 0;
        waitpid(pid_, &status, 0);
        running_ = false;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    // Ends it at once, whatever it holds; its exit status (137 unless it had ended by itself).
    int kill()
    {
        ::kill(pid_, SIGKILL);
        return wait();
    }

private:
    static int& toParent()
    {
        static int fd = -1;
        return fd;
    }

    int pipe_[2] = {-1, -1};
    pid_t pid_ = -1;
    bool running_ = true;
};

} // namespace ovo_test

#endif
