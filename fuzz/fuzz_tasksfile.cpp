// Tasks files: any bytes are read just as the plainest reader of the format reads them, and what was
// read is written whole.

#include <QFile>

#include "OculinexQTStandAloneInQt.h"
#include "fixtures/plainreader.h"
#include "fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *puchData, size_t nSize)
{
    const QByteArray achText = Fuzzing::bytes(puchData, nSize);
    QByteArray achPath = Fuzzing::writeScratch("opened", achText).toLocal8Bit();
    Fuzzing::require(*openTasksFile(achPath.data()) == '\0', "every file can be opened");
    Fuzzing::requireEqual(PlainReader::held().join('\n'),
                          PlainReader::read(QString::fromUtf8(achText.constData())).join('\n'),
                          "the text is read as the plain reader reads it");

    QByteArray achSaved = (Fuzzing::scratch() + "saved").toUtf8();
    Fuzzing::require(*saveTasksFile(achSaved.data()) == '\0', "the file can be saved");
    QFile cSaved(achSaved);
    Fuzzing::require(cSaved.open(QIODevice::ReadOnly) &&
                         cSaved.readAll() == TaskMgr::getInstance()->toString().toUtf8(),
                     "the saved file holds all tasks");
    TaskMgr::getInstance()->clear();
    return 0;
}
