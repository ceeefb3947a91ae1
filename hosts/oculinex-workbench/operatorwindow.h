#ifndef OPERATORWINDOW_H
#define OPERATORWINDOW_H

#include <QTimer>
#include <QWidget>

#include "operatorsetup.h"

class QDoubleSpinBox;
class QLabel;
class QPushButton;

namespace Plugin
{
class PictureView;
}

/// What stands on the screen beside the machine: verdict, picture, counters, the few settings that the
/// author picked, start and stop; nothing else can be changed. The escape key leaves it.
///
/// It neither starts nor stops tasks nor reads the view or the messages itself: whoever owns it
/// connects it with those who do.
class OperatorWindow : public QWidget
{
    Q_OBJECT

public:
    explicit OperatorWindow(const OperatorSetup &cSetup, QWidget *pcParent = nullptr);

    /// Where the picture of the view is to be shown.
    Plugin::PictureView *pictureView() const { return m_pcPicture; }

public slots:
    void printed(const QString &strText); ///< a step has printed that
    void setBusy(bool bBusy);             ///< while tasks are being started or stopped nothing is changed

signals:
    void startRequested();
    void stopRequested();
    void edited(int nTask, const QString &strWhat); ///< a setting of that task was changed
    void leaving();                                 ///< the user wants to; whoever owns the window lets it go

protected:
    void closeEvent(QCloseEvent *pcEvent) override;
    void keyPressEvent(QKeyEvent *pcEvent) override;
    void resizeEvent(QResizeEvent *pcEvent) override;

private:
    enum class Verdict { None, Good, Bad };
    struct Field {
        int m_nTask;
        int m_nStep;
        OperatorPick m_cPick;
        QDoubleSpinBox *m_pcBox;
    };

    void look();
    void showField(const Field &cField);
    void judge(Verdict eVerdict, const QString &strWhy);
    void applyField(const Field &cField, double dValue);
    void fit();

    const OperatorSetup m_cSetup;
    Verdict m_eVerdict = Verdict::None;
    qint64 m_nRuns = 0;
    qint64 m_nGood = 0; ///< by printed texts
    qint64 m_nBad = 0;
    bool m_bBusy = false;
    bool m_bEnded = false; ///< the task ended by itself, and that was counted
    QList<Field> m_lstField;
    Plugin::PictureView *m_pcPicture;
    QLabel *m_pcVerdict;
    QLabel *m_pcWhy;
    QLabel *m_pcRuns;
    QLabel *m_pcGood;
    QLabel *m_pcBad;
    QLabel *m_pcPictures;
    QLabel *m_pcFailures;
    QPushButton *m_pcStart;
    QPushButton *m_pcStop;
    QWidget *m_pcSide; ///< the column beside the picture
    QTimer m_cTimer;
};

#endif
