// enumeratePCSCDevices on the real service (pcscd with the virtual reader driver, two
// readers) against a bare SCardListReaders loop doing the same work.
#include <ovo/io/enumeration.h>

#include "ratio_report.h"

#include <benchmark/benchmark.h>
#include <PCSC/winscard.h>

#include <string>
#include <vector>

namespace {

void enumerateReaders(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(ovo::io::enumeratePCSCDevices());
    if (ovo::io::enumeratePCSCDevices().empty())
        state.SkipWithError("no PC/SC readers: start pcscd with the virtual reader driver");
}
BENCHMARK(enumerateReaders);

void bareListReaders(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<std::string> names;
        SCARDCONTEXT context = 0;
        if (SCardEstablishContext(SCARD_SCOPE_USER, nullptr, nullptr, &context) == SCARD_S_SUCCESS) {
            LPSTR list = nullptr;
            DWORD length = SCARD_AUTOALLOCATE;
            if (SCardListReaders(context, nullptr, reinterpret_cast<LPSTR>(&list), &length) == SCARD_S_SUCCESS) {
                for (const char* name = list; *name != '\0'; name += names.back().size() + 1)
                    names.emplace_back(name);
                SCardFreeMemory(context, list);
            }
            SCardReleaseContext(context);
        }
        benchmark::DoNotOptimize(names);
    }
}
BENCHMARK(bareListReaders);

} // namespace

int main(int argc, char** argv)
{
    return ovo_bench::runAndCompare(argc, argv, {{"enumerateReaders", "bareListReaders", 1.1}});
}
