#include "core/FailureText.h"

#include <cerrno>
#include <new>
#include <system_error>

#include "core/BlockFile.h"
#include "core/TsExceptions.h"

namespace veltrac {

namespace {

std::string textOf(const std::error_code& code)
{
    switch (code.value()) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return "the disk took no more (is it full?)";
        case EACCES:
        case EPERM:
            return "the file is write-protected, or its directory is";
        case EROFS:
            return "the disk is read-only";
        case ENOENT:
            return "the file or its directory is gone";
        case EISDIR:
            return "a directory has that name";
        case EINVAL:
            return "that name is not one of an ordinary file";
        case EWOULDBLOCK:
            return "another program is writing the file";
        case ESTALE:
            return "another program has replaced the file";
        case ENAMETOOLONG:
            return "the name is too long";
        default:
            return code.message();
    }
}

}  // namespace

std::string reasonOfFailure()
{
    try {
        throw;
    } catch (const TS::IO_ERROR& e) {
        return e.value2 >= kShortWrite ? "the disk took no more (is it full?)"
                                       : "the file cannot be read (is it cut short?)";
    } catch (const TS::READONLY_VIOLATION&) {
        return "the file is read-only";
    } catch (const TS::CREATE_ERROR&) {
        return "no new file can be made there";
    } catch (const TS::NOT_TS_FILE&) {
        return "it is no ts-file";
    } catch (const TS::OPEN_ERROR&) {
        return "the file cannot be opened";
    } catch (const TS::Failure&) {
        return "the file has fewer samples or columns than it had";
    } catch (const std::system_error& e) {
        return textOf(e.code());
    } catch (const std::bad_alloc&) {
        return "there is not enough memory";
    } catch (const std::exception& e) {
        return e.what();
    }
}

}  // namespace veltrac
