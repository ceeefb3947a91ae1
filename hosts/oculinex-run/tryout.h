#ifndef TRYOUT_H
#define TRYOUT_H

#include <vector>

#include <QImage>
#include <QPair>

#include "arithmMgr/arithms.h"
#include "common/storeaccess.h"
#include "options.h"
#include "report.h"

/// Runs algorithms on pictures without a task: one after the other on one store, as the steps of a
/// flow, but whatever they command.
///
/// IDs that a configuration leaves out are filled in for algorithms whose settings are known: an
/// input gets the newest output of its kind, else a parameter with the picture in it, an output a
/// fresh ID. An input that is named, and that nothing before writes, holds the picture as well. An
/// algorithm about which nothing is known gets the configuration as it is and the picture as colour
/// and as grey picture 1; what is new in the store afterwards is its output.
///
/// Main thread.
class Tryout
{
public:
    Tryout(const Options &cOptions, Report &cReport) : m_cOptions(cOptions), m_cReport(cReport) {}

    /// Looks the algorithms up and completes their configurations. An error text, empty when all is
    /// well; run() is called then only.
    QString prepare();
    /// Tries each picture. The exit code.
    int run();

private:
    using Key = QPair<ParamKind, int>; ///< a parameter of the store

    struct Step {
        Arithm *m_pcArithm = nullptr;
        QString m_strID;
        QString m_strConfig;
        bool m_bKnown = false;         ///< what it reads and writes
        QList<StoreAccess> m_lstWrite; ///< of one about which nothing is known: found by the first run
        QList<Key> m_lstRead;          ///< pictures
        std::vector<qint64> m_lstNs;   ///< of each run with the picture at hand
    };

    QString prepare(Step &cStep);
    /// Gives the setting an ID when it has none; an error text, empty when all is well.
    QString fillIn(const PluginSetting &cSetting, Step &cStep);
    /// Chooses what the names of each picture's files begin with, before '-', so that none is another's or
    /// a picture that was given.
    void choosePrefixes();
    bool tryPicture(const QString &strFile, const QString &strPrefix);
    /// One run of all algorithms; reports them if it is the last one.
    bool runOnce(const QString &strFile, const QImage &cPicture, bool bFirst, bool bLast);
    bool report(const QString &strFile, const QImage &cPicture, int nStep, const QStringList &lstCommand);
    int widthOf(const QImage &cImage) const; ///< when it is written
    QImage draw(const QList<Key> &lstKey, const QImage &cPicture, const Step &cStep) const;
    /// The name of the file comes back, empty when there is none; an error text, empty when all is well.
    QString save(const QImage &cImage, int nStep, const QString &strTag, QString &strFile) const;

    const Options &m_cOptions;
    Report &m_cReport;
    ArithmParamMgr *m_pcStore = nullptr; ///< of the picture at hand
    std::vector<Step> m_lstStep;
    int m_nLastID = 0;          ///< the highest that is named or was filled in
    QList<Key> m_lstLoad;       ///< the parameters that the picture is put into
    QList<Key> m_lstWritten;    ///< by the algorithms so far, the newest last
    bool m_bAnyWritten = false; ///< by an algorithm that may write anything
    QStringList m_lstPrefix;    ///< of the files of each picture
    QString m_strPrefix;        ///< of the picture at hand
};

#endif
