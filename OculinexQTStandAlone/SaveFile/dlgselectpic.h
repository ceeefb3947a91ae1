#ifndef DLGSELECTPIC_H
#define DLGSELECTPIC_H

#include <QDialog>
#include <QMap>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

namespace Ui
{
class DlgSelectPic;
}

/// Lets the user choose a picture of the store, colour or grey.
class OCULINEXQTSTANDALONE_EXPORT DlgSelectPic : public QDialog
{
    Q_OBJECT

public:
    DlgSelectPic(ArithmParamMgr *pcAPM, QWidget *pcParent = nullptr);
    ~DlgSelectPic() override;

    int getID();   ///< of the chosen picture, -1 while none was chosen
    int getType(); ///< 0 colour, 1 grey

public Q_SLOTS:
    void on_btnOK_clicked();
    void on_btnCancel_clicked();

public:
    Ui::DlgSelectPic *ui;
    int m_nID;
    int m_nType;
    ArithmParamMgr *m_pcAPM;
    QMap<int, int> m_mapDIBParamID; ///< row -> ID, as the next
    QMap<int, int> m_mapGray8ParamID;
    QMap<int, int> m_mapDIBParamIDR; ///< ID -> row, as the next
    QMap<int, int> m_mapGray8ParamIDR;
};

#endif
