#include "portal/FailureReason.h"

#include <exception>
#include <system_error>

#include "core/TsExceptions.h"

namespace veltrac {

namespace {

constexpr unsigned kOfAWrite = 200000;  // byte counts from here on are those of a write, see TS::IO_ERROR

}  // namespace

std::string reasonOfFailure()
{
    try {
        throw;
    } catch (const TS::IO_ERROR& e) {
        return e.value2 >= kOfAWrite ? "the disk took no more (is it full?)"
                                     : "the file cannot be read (is it cut short?)";
    } catch (const TS::READONLY_VIOLATION&) {
        return "the file is read-only";
    } catch (const TS::CREATE_ERROR&) {
        return "no new file can be made there";
    } catch (const TS::Failure&) {
        return "the file cannot be opened for writing";
    } catch (const std::system_error& e) {
        return e.code().message() + " (" + e.what() + ")";
    } catch (const std::exception& e) {
        return e.what();
    }
}

}  // namespace veltrac
