// A receiver killed after every single instruction of its recv. A child process takes a
// message while this process steps it (ptrace) and looks at the state of the block and the
// journal that a kill at that point would leave; each state, copied into a channel of its
// own, is put right by that channel's next holder: the messages left are intact, in order
// and back to back, and every one gone was taken by the receiver or is counted as dropped.
#include "ipc/ipc_test.h"
#include "ipc/removal_journal.h"

#include <numeric>

#include <sys/ptrace.h>
#include <sys/wait.h>

namespace {

using ovo::ipc::Entry;
using ovo::ipc::MessageChannel;
using ovo::ipc::RemovalRecord;
using ovo::ipc::SharedMemory;

const unsigned int cutChannelSize = 4113 + 64 * 1024;

std::uint32_t idOf(std::size_t i) { return static_cast<std::uint32_t>(1 + i % 3); }

struct CutRow {
    std::string name;
    std::vector<std::uint32_t> sizes; // the queue: message i has the id 1 + i % 3
    unsigned int take;                // the id asked for (0: the oldest)
    std::uint32_t mostDropped;        // what a cut may cost at most, the message taken included

    std::uint32_t taken() const { return take == 0 ? 0 : take - 1; } // ids repeat every 3 messages
};

void PrintTo(const CutRow& row, std::ostream* out) { *out << row.name; }

const CutRow cutRows[] = {
    {"small_bodies_in_one_move", std::vector<std::uint32_t>(20, 40), 0, 20},
    {"bodies_that_fit_the_hole", {3000, 1000, 1000, 500}, 0, 1},
    {"windows_that_fit_the_hole", {16400, 6000, 6000, 6000}, 0, 1},
    {"taken_from_the_middle", {100, 200, 300, 400, 500, 600}, 3, 4},
    {"a_tail_of_two_windows", std::vector<std::uint32_t>(36, 500), 0, 33},
    {"an_empty_body", {0, 12, 300, 12}, 0, 1},
    {"the_youngest", {40, 40, 500}, 3, 1},
};

// A channel of its own that is given each state in turn and repaired by its next holder.
class Cut {
public:
    Cut(const std::string& name, const CutRow& row)
        : row_(row), channel_(name, cutChannelSize), data_(name + "_data", cutChannelSize),
          journal_(name + "_journal", sizeof(RemovalRecord))
    {
    }

    void check(const std::string& block, const std::string& record)
    {
        std::memcpy(data_.begin(), block.data(), block.size());
        std::memcpy(journal_.begin(), record.data(), record.size());
        const bool repaired = (static_cast<const RemovalRecord*>(journal_.begin())->state & 1) != 0;
        const std::uint32_t before = static_cast<const RemovalRecord*>(journal_.begin())->state >> 1;
        const std::uint32_t count = channel_.inQueue(); // the next holder repairs
        inside += repaired ? 1 : 0;
        // Left: back to back from 4113, each entry the id and the intact body of a message
        // of the queue, oldest first.
        const auto* bytes = static_cast<const unsigned char*>(data_.begin());
        const auto* table = reinterpret_cast<const Entry*>(bytes + 16);
        std::uint32_t offset = 4113, next = 0;
        bool takenLeft = false;
        for (std::uint32_t i = 0; i < count; ++i) {
            ASSERT_EQ(table[i].offset, offset) << i;
            ovo_test::Identity identity;
            const bool empty = table[i].size == 0 && row_.sizes[next] == 0;
            ASSERT_TRUE(empty || ovo_test::bodyIsIntact(bytes + offset, table[i].size, identity)) << i;
            const std::uint32_t message = empty ? next : identity.second;
            ASSERT_TRUE(message >= next && message < row_.sizes.size() && table[i].id == idOf(message)) << i;
            next = message + 1;
            offset += table[i].size;
            takenLeft = takenLeft || message == row_.taken();
        }
        const auto queued = static_cast<std::uint32_t>(row_.sizes.size());
        const std::uint32_t dropped = (static_cast<const RemovalRecord*>(journal_.begin())->state >> 1) - before;
        if (repaired) { // only an undone removal leaves the message taken
            EXPECT_EQ(dropped, queued - count);
            EXPECT_EQ(takenLeft, count == queued);
            EXPECT_LE(dropped, row_.mostDropped);
        } else { // not begun, or done
            EXPECT_EQ(dropped, 0u);
            EXPECT_TRUE(count == queued || (count == queued - 1 && !takenLeft));
        }
    }

    unsigned inside = 0; // states inside the removal

private:
    const CutRow& row_;
    MessageChannel channel_;
    SharedMemory data_, journal_;
};

class RemovalCutTest : public ovo_test::IpcTest, public ::testing::WithParamInterface<CutRow> {};

TEST_P(RemovalCutTest, EveryStateAKillLeavesIsPutRight)
{
    const CutRow& row = GetParam();
    const std::string queue = name(row.name); // before the fork: the name holds this process's id
    MessageChannel channel(queue, cutChannelSize);
    std::vector<unsigned char> body(65536);
    for (std::uint32_t i = 0; i < row.sizes.size(); ++i) {
        ovo_test::writeBody(body.data(), row.sizes[i], {0, i});
        ASSERT_TRUE(channel.send(idOf(i), body.data(), row.sizes[i]));
    }
    SharedMemory data(queue + "_data", cutChannelSize), journal(queue + "_journal", sizeof(RemovalRecord));
    const pid_t child = fork();
    if (child == 0) { // the receiver, stepped
        MessageChannel receiver(queue, cutChannelSize);
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        _exit(receiver.recv(row.take, body.data(), row.sizes[row.taken()]) ? 0 : 1);
    }
    Cut cut(name(row.name + "-cut"), row);
    const std::size_t blockBytes = 4113 + std::accumulate(row.sizes.begin(), row.sizes.end(), std::size_t{0});
    std::string checkedBlock, record;
    unsigned states = 0, steps = 0;
    int status = 0;
    for (waitpid(child, &status, 0); WIFSTOPPED(status); waitpid(child, &status, 0)) {
        const std::string nowRecord(static_cast<const char*>(journal.begin()), sizeof(RemovalRecord));
        // Every step that changes the record; of the others, every 16th if bytes moved since
        // the last state checked (a string move stops after each byte). Reading the block at
        // every step would cost more than the step.
        const bool recordChanged = nowRecord != record;
        if (recordChanged || ++steps % 16 == 0) {
            std::string nowBlock(static_cast<const char*>(data.begin()), blockBytes);
            if (recordChanged || nowBlock != checkedBlock) {
                ++states;
                cut.check(nowBlock, nowRecord);
                checkedBlock = std::move(nowBlock);
            }
        }
        record = nowRecord;
        ptrace(PTRACE_SINGLESTEP, child, nullptr, nullptr);
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_GT(cut.inside, 0u) << "no step inside the removal";
    std::cout << states << " states, " << cut.inside << " inside the removal\n";
}

INSTANTIATE_TEST_SUITE_P(Rows, RemovalCutTest, ::testing::ValuesIn(cutRows),
                         [](const auto& row) { return row.param.name; });

} // namespace
