// A small host with a log of its own: the library's lines appear in it.

#include <objbase.h>

#include <plog/Appenders/ColorConsoleAppender.h>
#include <plog/Formatters/FuncMessageFormatter.h>
#include <plog/Init.h>
#include <plog/Log.h>

#include "GraphicCardEnumeration.h"
#include "GraphicCardInfo.h"
#include "GraphicCardPlog.h"
#include "OrvelSimulation.h"

using namespace orvel::shared::enumeration;

int main(int argc, char** argv)
{
    plog::ConsoleAppender<plog::FuncMessageFormatter> console;
    plog::init(plog::info, &console);
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const char* problem = "";
    if (argc > 1 && OrvelSimulateMachine(argv[1], &problem) != 0) {
        PLOGE << problem;
        return 2;
    }
    ForwardGraphicCardLogToPlog();
    GraphicCardEnumeration cards;
    cards.QueryGraphicCards();
    for (int i = 0; i < static_cast<int>(cards.size()); ++i) {
        PLOGI << "found " << cards.get(i)->GetCardName();
    }
    return 0;
}
