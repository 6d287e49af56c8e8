#include "OrdovanApp/controller/CommandCenter.h"

void CommandCenter::post(QStringView name) {
    Q_EMIT posted(name.toString());
}
