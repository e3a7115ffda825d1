// The interactive prompt at a terminal: line editing, history and completion of commands,
// directions, tag names, listeners and cameras.
#ifndef TOOLS_ZORVCTL_LINEEDITOR_H
#define TOOLS_ZORVCTL_LINEEDITOR_H

#include <string>

#include "Commands.h"

namespace zorvctl {

class LineEditor {
  public:
    // One at a time: the line editing library keeps its state per process. History is read from
    // ~/.zorvctl_history and written there after every line.
    explicit LineEditor(const Context& context);
    ~LineEditor();

    // Shows the prompt and reads a line; false at the end of input.
    bool read(std::string& line);

  private:
    std::string mHistory;
};

}  // namespace zorvctl

#endif  // TOOLS_ZORVCTL_LINEEDITOR_H
