#ifndef STOREPANE_H
#define STOREPANE_H

#include <memory>

#include <QWidget>

#include "arithmparammgr.h"

class QLabel;
class QSplitter;
class QTableWidget;
class QTreeWidget;
class TaskInfo;

namespace Plugin
{
class PictureView;
}

/// What a task's store holds after a run: pictures with a thumbnail, lists with their length. The one
/// that is chosen is shown large, a list as a table beside the picture over which it is drawn.
class StorePane : public QWidget
{
    Q_OBJECT

public:
    explicit StorePane(QWidget *pcParent = nullptr);

    /// Copies the store of an idle task, which may run or die afterwards; a task that runs shows
    /// nothing. What was chosen before stays chosen where it is still there.
    void showStore(TaskInfo *pcTask);
    void clear();

protected:
    void resizeEvent(QResizeEvent *pcEvent) override;

private:
    using Kind = ArithmParamMgr::Kind;

    void fillList();
    void showChosen();
    void fillTable(Kind eKind, int nID);

    /// Destroys the copy.
    struct Deleter {
        void operator()(ArithmParamMgr *pcStore) const { ArithmParamMgr::deleteInstance(pcStore); }
    };

    std::unique_ptr<ArithmParamMgr, Deleter> m_pcStore; ///< own copy; null when nothing is shown
    Kind m_eUnderKind = Kind::DIB; ///< the picture that was chosen last, over which lists are drawn
    int m_nUnderID = -1;
    QSplitter *m_pcSplitter;
    QTreeWidget *m_pcList;
    QLabel *m_pcTitle;
    Plugin::PictureView *m_pcPicture;
    QTableWidget *m_pcTable;
    QLabel *m_pcPixel;
};

#endif
