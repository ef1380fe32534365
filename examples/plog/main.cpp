// A minimal host whose own log includes the library's lines: plog-host [MACHINE.json].

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <plog/Appenders/ColorConsoleAppender.h>
#include <plog/Formatters/FuncMessageFormatter.h>
#include <plog/Init.h>
#include <plog/Log.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"
#include "GraphicCardPlog.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

// Gets the argument as UTF-8. `argv` is in the computer's code page, which may lack characters of a path.
static bool GetUtf8Argument(int index, char* text, int bytes)
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const bool isThere = arguments != nullptr && index < count;
    const bool fits = isThere && WideCharToMultiByte(CP_UTF8, 0, arguments[index], -1, text, bytes, nullptr, nullptr) > 0;
    LocalFree(arguments);
    return fits;
}

int main(int argc, char**)
{
    plog::ConsoleAppender<plog::FuncMessageFormatter> console;
    plog::init(plog::info, &console);
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return 1;
    }
    char path[1024] = "";
    const char* problem = "";
    if (argc > 1 && GetUtf8Argument(1, path, sizeof path) &&
        OrvelSimulateMachine(path, &problem) != ORVEL_SIMULATION_IN_PLACE) {
        PLOGE << problem;
        return 2;
    }
    ForwardGraphicCardLogToPlog();
    {
        GraphicCardEnumeration cards;
        cards.QueryGraphicCards();
        for (int i = 0; i < static_cast<int>(cards.size()); ++i) {
            PLOGI << "found " << cards.get(i)->GetCardName();
        }
    }
    OrvelEndSimulation();
    CoUninitialize();
    return 0;
}
