// The options of a verb, named with their texts for help, manual page and completion alike.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace veltrac {

// Each call adds an option ("--from", or "-o,--output") that stores what the user gives; without it the value
// stays as it is. Values are borrowed until the command line has been read. Texts that are no value of their
// option are wrong usage. Numbers have a decimal point, whatever the locale.
class Options
{
public:
    // Borrows it.
    explicit Options(CLI::App& app) : m_app(app) {}

    void flag(const char* name, bool& value, const char* help);
    // `type` stands for the value in the help: "PLACE".
    void text(const char* name, std::string& value, const char* type, const char* help);
    // Between commas, or the option several times.
    void texts(const char* name, std::vector<std::string>& values, const char* type, const char* help);
    // The option several times; commas belong to the texts.
    void wholeTexts(const char* name, std::vector<std::string>& values, const char* type, const char* help);
    void number(const char* name, double& value, const char* type, const char* help);
    void number(const char* name, std::optional<double>& value, const char* type, const char* help);
    // Whole and not below `least`.
    void count(const char* name, std::uint32_t& value, std::uint32_t least, const char* help);
    void count(const char* name, std::optional<std::uint32_t>& value, std::uint32_t least, const char* help);
    // One of the names, in whatever case; `value` becomes its place among them.
    void choice(const char* name, int& value, const std::vector<std::string>& names, const char* help);
    void choice(const char* name, std::optional<int>& value, const std::vector<std::string>& names,
                const char* help);

private:
    void choose(const char* name, const std::vector<std::string>& names, const char* help,
                const std::function<void(int)>& take);

    CLI::App& m_app;
};

// A separator and a decimal sign as the user writes them, each empty where none was chosen: "tab" and "blank"
// become the signs themselves. Throws UsageError.
void takeSigns(std::string& separator, std::string& decimal);

}  // namespace veltrac
