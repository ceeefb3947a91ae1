// The files that the workbench opens and saves, and what it remembers of them.

#include <csignal>

#include <sys/resource.h>

#include "bench.h"
#include "datatable.h"

class TestWorkbenchFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { keepSettingsIn(m_cFolder.path()); }
    void init()
    {
        Fake::reset();
        m_strFile = makeFile(m_cFolder);
    }

    /// What can't be saved stays as it was in the file, and unsaved in the window.
    void tellsThatSavingFailed()
    {
        Bench cBench(m_strFile);
        cBench.steps()->item(0, 0)->setText("unsaved");
        const QByteArray achBefore = contents(m_strFile);
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit cLimit{};
        getrlimit(RLIMIT_FSIZE, &cLimit);
        const rlimit cFull{static_cast<rlim_t>(achBefore.size() / 2), cLimit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &cFull); // the disk is full
        QString strBox;
        const bool bTold = isAnswered({DialogUser::read(strBox)}, [&] { cBench.trigger("Save"); });
        setrlimit(RLIMIT_FSIZE, &cLimit);
        QVERIFY2(bTold && strBox.contains(": " + m_strFile), qPrintable(strBox));
        QCOMPARE(contents(m_strFile), achBefore);
        QVERIFY(cBench.isWindowModified());
        QCOMPARE(cBench.document().path(), m_strFile);
        QVERIFY(cBench.trigger("Save") && !cBench.isWindowModified());
        QVERIFY(contents(m_strFile).contains("unsaved"));
    }

    /// What can't be opened is told, and what was open stays, and goes on.
    void refusesWhatIsNoFlow_data()
    {
        addRows("what            strPath\n"
                "missing         /no/such/file.tasks\n"
                "a picture       " OCULINEX_SOURCE_DIR "/examples/pictures/coins.png\n"
                "without an end  /dev/zero");
    }
    void refusesWhatIsNoFlow()
    {
        QFETCH(QString, strPath);
        Bench cBench(m_strFile);
        cBench.steps()->item(0, 0)->setText("unsaved");
        cBench.trigger("Start");
        QTRY_VERIFY(cBench.control().isIdle());
        QString strBox;
        QVERIFY(isAnswered({DialogUser::read(strBox)}, [&] { cBench.openFile(strPath); }));
        QVERIFY(cBench.control().isIdle() && Document::task(0)->IsRunning());
        QVERIFY2(strBox.startsWith("Open: " + strPath), qPrintable(strBox));
        QCOMPARE(cBench.names().join(' '), "A B C");
        QCOMPARE(cBench.document().path(), m_strFile);
    }

    /// Two programs with the same file: the second to save is told, and loses nothing.
    void asksBeforeOverwritingOthers()
    {
        Bench cBench(m_strFile);
        cBench.steps()->item(0, 0)->setText("mine");
        QVERIFY(cBench.trigger("Save") && !cBench.isWindowModified()); // it was nobody else
        write(m_strFile, taskText("theirs", {}).toUtf8());
        for (const char *szAnswer : {"Cancel", "Overwrite"}) {
            cBench.steps()->item(0, 0)->setText(szAnswer);
            QVERIFY(isAnswered({pressButton(szAnswer)}, [&] { cBench.trigger("Save"); }));
            QCOMPARE(cBench.isWindowModified(), szAnswer[0] == 'C');
            QCOMPARE(contents(m_strFile).contains("theirs"), szAnswer[0] == 'C');
        }
    }

    /// What the library doesn't save goes with the user's will only, also after the task was made anew.
    void asksBeforeLosingADataSource()
    {
        write(m_strFile, taskText("A", {"a"}).replace("Picture Folder", "Gone Camera").toUtf8() +
                             taskText("B", {"b"}).toUtf8());
        Bench cBench(m_strFile);
        cBench.steps()->item(0, 0)->setText("edited");
        QVERIFY(cBench.trigger("Undo") && cBench.trigger("Redo"));
        for (const char *szAnswer : {"Cancel", "Save"}) {
            QString strBox;
            const auto fnAnswer = [&](QWidget &cTop) {
                strBox = cTop.property("text").toString();
                pressButton(szAnswer)(cTop);
            };
            QVERIFY(isAnswered({fnAnswer}, [&] { cBench.trigger("Save"); }));
            QVERIFY2(strBox.contains("\nA: Gone Camera") && !strBox.contains("B:"), qPrintable(strBox));
            QCOMPARE(cBench.isWindowModified(), szAnswer[0] == 'C');
            QCOMPARE(contents(m_strFile).contains("Gone Camera"), szAnswer[0] == 'C');
        }
    }

private:
    QTemporaryDir m_cFolder;
    QString m_strFile;
};

QTEST_MAIN(TestWorkbenchFiles)

#include "tst_workbenchfiles.moc"
