// The C interface's failure texts, one per thread, and the version.
#include "c/guard.h"

#include <ovo/version.h>

#include <new>

namespace {

thread_local std::string lastError;

ovo_status keep(ovo_status status, const std::string& text)
{
    lastError = text;
    return status;
}

} // namespace

namespace ovo_c {

ovo_status failureInFlight(const char* function) noexcept
{
    try {
        try {
            throw;
        } catch (const MissingArgument& e) {
            return keep(OVO_ERROR_ARGUMENT, std::string(function) + ": " + e.what());
        } catch (const std::bad_alloc&) {
            return keep(OVO_ERROR_MEMORY, "out of memory");
        } catch (const std::logic_error& e) { // refused values, texts that do not parse
            return keep(OVO_ERROR_ARGUMENT, e.what());
        } catch (const std::range_error& e) { // numbers out of range in a text form
            return keep(OVO_ERROR_ARGUMENT, e.what());
        } catch (const std::exception& e) {
            return keep(OVO_ERROR_SYSTEM, e.what());
        } catch (...) {
            return keep(OVO_ERROR_INTERNAL, std::string(function) + ": an exception of unknown type");
        }
    } catch (...) { // the text itself found no memory
        lastError.clear();
        return OVO_ERROR_MEMORY;
    }
}

} // namespace ovo_c

extern "C" {

const char* ovo_last_error(void) { return lastError.c_str(); }

const char* ovo_version(void) { return ovo::libraryVersion(); }

} // extern "C"
