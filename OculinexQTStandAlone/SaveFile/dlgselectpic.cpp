#include "SaveFile/dlgselectpic.h"

#include "SaveFile/ui_dlgselectpic.h"
#include "parametertable.h"

DlgSelectPic::DlgSelectPic(ArithmParamMgr *pcAPM, QWidget *pcParent)
    : QDialog(pcParent), ui(new Ui::DlgSelectPic), m_nID(-1), m_nType(0), m_pcAPM(pcAPM)
{
    ui->setupUi(this);
    m_mapDIBParamID = fillParameterTable(ui->tblRGB, m_pcAPM, ArithmParamMgr::Kind::DIB);
    m_mapGray8ParamID = fillParameterTable(ui->tblGray8, m_pcAPM, ArithmParamMgr::Kind::Gray8);
    m_mapDIBParamIDR = inverted(m_mapDIBParamID);
    m_mapGray8ParamIDR = inverted(m_mapGray8ParamID);
}

DlgSelectPic::~DlgSelectPic()
{
    delete ui;
}

int DlgSelectPic::getID()
{
    return m_nID;
}

int DlgSelectPic::getType()
{
    return m_nType;
}

void DlgSelectPic::on_btnOK_clicked()
{
    if (m_pcAPM) {
        m_nType = ui->tabDataType->currentIndex();
        const bool bGrey = m_nType == 1;
        const int nRow = selectedRow(bGrey ? ui->tblGray8 : ui->tblRGB);
        m_nID = (bGrey ? m_mapGray8ParamID : m_mapDIBParamID).value(nRow, m_nID);
    }
    accept();
}

void DlgSelectPic::on_btnCancel_clicked()
{
    reject();
}
