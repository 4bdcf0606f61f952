#include "cli/Options.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

#include "cli/Verb.h"

namespace veltrac {

void Options::flag(const char* name, bool& value, const char* help)
{
    m_app.add_flag(name, value, help);
}

void Options::text(const char* name, std::string& value, const char* type, const char* help)
{
    m_app.add_option(name, value, help)->type_name(type);
}

void Options::texts(const char* name, std::vector<std::string>& values, const char* type, const char* help)
{
    m_app.add_option(name, values, help)->type_name(type)->delimiter(',')->allow_extra_args(false);
}

void Options::wholeTexts(const char* name, std::vector<std::string>& values, const char* type,
                         const char* help)
{
    m_app.add_option(name, values, help)->type_name(type)->allow_extra_args(false);
}

void Options::number(const char* name, double& value, const char* type, const char* help)
{
    m_app.add_option(name, value, help)->type_name(type);
}

void Options::number(const char* name, std::optional<double>& value, const char* type, const char* help)
{
    m_app
        .add_option_function<double>(
            name, [&value](const double& given) { value = given; }, help)
        ->type_name(type);
}

void Options::count(const char* name, std::uint32_t& value, std::uint32_t least, const char* help)
{
    m_app.add_option(name, value, help)->type_name("N")->check(CLI::Range(least, UINT32_MAX).description(""));
}

void Options::count(const char* name, std::optional<std::uint32_t>& value, std::uint32_t least,
                    const char* help)
{
    m_app
        .add_option_function<std::uint32_t>(
            name, [&value](const std::uint32_t& given) { value = given; }, help)
        ->type_name("N")
        ->check(CLI::Range(least, UINT32_MAX).description(""));
}

void Options::choose(const char* name, const std::vector<std::string>& names, const char* help,
                     const std::function<void(int)>& take)
{
    std::string list;
    for (const std::string& one : names)
        list += (list.empty() ? "" : "|") + one;
    // "butterworth-lp" and "Butterworth Lp" are one.
    const auto bare = [](const std::string& text) {
        std::string out;
        for (const char c : text)
            if (c != ' ' && c != '-' && c != '_')
                out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return out;
    };
    m_app
        .add_option_function<std::string>(
            name,
            [=](const std::string& given) {
                for (std::size_t i = 0; i < names.size(); ++i)
                    if (bare(names[i]) == bare(given)) {
                        take(static_cast<int>(i));
                        return;
                    }
                throw CLI::ValidationError(std::string(name) + ": \"" + given + "\" is none of " + list);
            },
            help)
        ->type_name(list);
}

void Options::choice(const char* name, int& value, const std::vector<std::string>& names, const char* help)
{
    choose(name, names, help, [&value](int chosen) { value = chosen; });
}

void Options::choice(const char* name, std::optional<int>& value, const std::vector<std::string>& names,
                     const char* help)
{
    choose(name, names, help, [&value](int chosen) { value = chosen; });
}

namespace {

// "tab" and "blank" for signs that a shell does not like to carry.
std::string signOf(const std::string& text, const char* option)
{
    if (text.empty() || text.size() == 1)
        return text;
    if (text == "tab" || text == "\\t")
        return "\t";
    if (text == "blank" || text == "blanks")
        return " ";
    throw UsageError(std::string(option) + " is one sign, \"tab\" or \"blank\"");
}

}  // namespace

void takeSigns(std::string& separator, std::string& decimal)
{
    separator = signOf(separator, "--separator");
    decimal = signOf(decimal, "--decimal");
    if (!decimal.empty() && decimal != "." && decimal != ",")
        throw UsageError("--decimal is a point or a comma");
    if (!separator.empty() && separator == decimal)
        throw UsageError("--separator and --decimal are the same sign");
}

}  // namespace veltrac
