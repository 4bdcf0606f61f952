#include "cli/ManualPage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace veltrac {

namespace {

// Text of a manual page: no line of it is taken for a request.
std::string roff(const std::string& text)
{
    std::string out;
    bool begins = true;
    for (const char c : text) {
        if (begins && (c == '.' || c == '\''))
            out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
        begins = c == '\n';
    }
    return out;
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// Long lists of choices may go on in the next line behind each bar.
std::string breakable(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        out += c;
        if (c == '|')
            out += "\\:";
    }
    return out;
}

bool isShown(const CLI::Option& option)
{
    return !option.get_group().empty();
}

void addOptions(const CLI::App& app, std::string& out)
{
    for (const CLI::Option* const option : app.get_options()) {
        if (!isShown(*option) || option->get_positional() || option->get_name() == "--help,-h")
            continue;
        out += ".TP\n.B " + roff(option->get_name()) + '\n';
        if (option->get_items_expected_max() > 0)
            out.insert(out.size() - 1, " " + breakable(roff(option->get_type_name())));
        out += roff(option->get_description()) + ".\n";
    }
}

void addExample(const VerbWords& words, std::string& out)
{
    out += ".PP\nExample:\n.PP\n.nf\n.RS\n" + roff(words.example) + "\n.RE\n.fi\n";
}

std::string manualPage(const CLI::App& app, const std::vector<std::unique_ptr<Verb>>& verbs)
{
    // Adjusted left: lines of long lists of choices have nothing to stretch.
    std::string out = ".TH VELTRAC\\-CLI 1 \"\" \"Veltrac " VELTRAC_VERSION
                      "\" \"User Commands\"\n.ad l\n.SH NAME\nveltrac\\-cli \\- " +
                      roff(app.get_description()) +
                      "\n.SH SYNOPSIS\n.B veltrac\\-cli\n.I verb\n.RI [ options ]\n.IR file ...\n"
                      ".SH DESCRIPTION\nDoes what the windows of\n.BR veltrac (1)\ndo, without them. "
                      "Where a file or a directory is asked for, \\- is standard input or output.\n";
    for (const auto& verb : verbs) {
        const VerbWords& words = verb->words();
        const CLI::App& sub = *app.get_subcommand(words.name);
        out += ".SH " + upper(words.name) + '\n' + roff(words.description) + '\n';
        addOptions(sub, out);
        addExample(words, out);
    }
    out +=
        ".SH EXIT STATUS\n.TP\n.B 0\nAll is done.\n.TP\n.B 1\nSome files failed, each named on standard "
        "error with its reason; the others are done.\n.TP\n.B 2\nWrong usage; nothing was done.\n"
        ".SH ENVIRONMENT\n.TP\n.B TMPDIR\nThe directory of scratch files.\n.TP\n.B TZ\nThe zone of times "
        "of the clock.\n.SH SEE ALSO\n.BR veltrac (1)\n";
    return out;
}

std::string bashCompletion(const CLI::App& app, const std::vector<std::unique_ptr<Verb>>& verbs)
{
    std::string names;
    std::string cases;
    for (const auto& verb : verbs) {
        const std::string name = verb->words().name;
        names += (names.empty() ? "" : " ") + name;
        std::string options = "--help";
        for (const CLI::Option* const option : app.get_subcommand(name)->get_options())
            if (isShown(*option) && !option->get_lnames().empty() && option->get_lnames().front() != "help")
                options += " --" + option->get_lnames().front();
        cases.append("        ")
            .append(name)
            .append(")\n            options=\"")
            .append(options)
            .append("\" ;;\n");
    }
    return "# Completion of veltrac-cli for bash.\n_veltrac_cli()\n{\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} options=\n    COMPREPLY=()\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n        mapfile -t COMPREPLY < <(compgen -W \"" +
           names +
           " --help --version\" -- \"$word\")\n        return\n    fi\n    case ${COMP_WORDS[1]} in\n" +
           cases +
           "    esac\n    if [[ $word == -* ]]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n    else\n"
           "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n    fi\n}\n"
           "complete -o filenames -F _veltrac_cli veltrac-cli\n";
}

}  // namespace

std::string writtenPage(const std::string& which, const CLI::App& app,
                        const std::vector<std::unique_ptr<Verb>>& verbs)
{
    if (which == "man")
        return manualPage(app, verbs);
    if (which == "bash")
        return bashCompletion(app, verbs);
    throw UsageError("no such page: " + which);
}

}  // namespace veltrac
