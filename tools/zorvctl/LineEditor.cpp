// The interactive prompt, through the readline interface of libedit.
#include "LineEditor.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <vector>

#include <editline/readline.h>

namespace zorvctl {

namespace {

constexpr int kHistoryLines = 1000;
const Context* sContext = nullptr;
std::vector<std::string> sMatches;

char* nextMatch(const char*, int state) {
    static size_t next;
    if (state == 0) next = 0;
    return next < sMatches.size() ? strdup(sMatches[next++].c_str()) : nullptr;
}

char** complete(const char* text, int, int end) {
    rl_attempted_completion_over = 1;  // no file names
    sMatches = completions(*sContext, std::string(rl_line_buffer, end));
    return rl_completion_matches(text, nextMatch);
}

}  // namespace

LineEditor::LineEditor(const Context& context) {
    sContext = &context;
    rl_readline_name = "zorvctl";
    rl_attempted_completion_function = complete;
    using_history();
    stifle_history(kHistoryLines);
    const char* home = getenv("HOME");
    if (home != nullptr) {
        mHistory = std::string(home) + "/.zorvctl_history";
        read_history(mHistory.c_str());
    }
}

LineEditor::~LineEditor() {
    sContext = nullptr;
}

bool LineEditor::read(std::string& line) {
    char* text = readline("zorvctl> ");
    if (text == nullptr) return false;
    line = text;
    // Written at once, so that a session ended by Ctrl-C keeps its history too.
    if (line.find_first_not_of(" \t") != std::string::npos) {
        add_history(text);
        if (!mHistory.empty()) write_history(mHistory.c_str());
    }
    free(text);
    return true;
}

}  // namespace zorvctl
