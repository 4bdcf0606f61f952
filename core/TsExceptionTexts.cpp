#include "core/TsExceptionTexts.h"

#include <exception>
#include <string_view>

#include "core/TsExceptions.h"

namespace veltrac {

namespace {

std::string withValue(std::string text, std::string_view mark, std::uint32_t value)
{
    const std::size_t at = text.find(mark);
    return at == std::string::npos ? text : text.replace(at, mark.size(), std::to_string(value));
}

std::string withValues(const char* text, const TS::Failure& e)
{
    return withValue(withValue(text, "%1", e.value1), "%2", e.value2);
}

std::string ofReadOnly(const TsExceptionTexts& texts, const TS::Failure& e)
{
    if (texts.readOnly == nullptr)
        return texts.unknown;
    if (e.value1 != 0)
        return withValues(texts.readOnlyOffset, e);
    return e.name.empty() ? texts.readOnly : texts.readOnlyName + e.name;
}

}  // namespace

std::string textOfCurrentException(const TsExceptionTexts& texts)
{
    try {
        throw;
    } catch (const TS::CREATE_ERROR& e) {
        return texts.createError + e.name;
    } catch (const TS::OPEN_ERROR& e) {
        return texts.openError + e.name;
    } catch (const TS::NOT_TS_FILE& e) {
        return withValues(texts.notTsFile, e);
    } catch (const TS::IO_ERROR& e) {
        return withValues(texts.ioError, e);
    } catch (const TS::NO_TIME_COLUMN& e) {
        return withValues(texts.noTimeColumn, e);
    } catch (const TS::ILL_SAMPLE& e) {
        return withValues(texts.illSample, e);
    } catch (const TS::ILL_COLUMN& e) {
        return withValues(texts.illColumn, e);
    } catch (const TS::ILL_TIME& e) {
        return withValues(texts.illTime, e);
    } catch (const TS::READONLY_VIOLATION& e) {
        return ofReadOnly(texts, e);
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return texts.unknown;
    }
}

}  // namespace veltrac
