#pragma once

namespace orvel::tools {

enum ExitStatus {
    ExitDone = 0,
    ExitWrongInput = 2, ///< wrong options, or an unreadable or wrong machine file
    ExitNoLibrary = 3,  ///< a library cannot be loaded
    ExitException = 4,  ///< something left the enumeration, or no snapshot can be taken
};

} // namespace orvel::tools
