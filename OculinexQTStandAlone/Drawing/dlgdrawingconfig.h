#ifndef DLGDRAWINGCONFIG_H
#define DLGDRAWINGCONFIG_H

#include <QDialog>
#include <QMap>
#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;

namespace Ui
{
class DlgDrawingConfig;
}

/// Lets the user choose what a drawing step draws, and how.
///
/// The select button takes the current tab's row and settings; what is changed afterwards counts only
/// when it is pressed again. A parameter whose ID is 0 cannot be chosen. The store is read while the
/// dialog is made, and not after that.
class OCULINEXQTSTANDALONE_EXPORT DlgDrawingConfig : public QDialog
{
    Q_OBJECT

public:
    /// The config string is that of the step, without the view.
    DlgDrawingConfig(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent = nullptr);
    ~DlgDrawingConfig() override;

    /// The config string once the dialog was accepted, before that the settings alone.
    QString getConfigString();
    /// Shows the settings in the widgets of their tab.
    void parseConfigString();

public Q_SLOTS:
    void on_btnSelectElement_clicked();
    void on_btnOK_clicked();
    void on_btnCancel_clicked();
    void on_btnColorPoints_clicked();
    void on_btnColorLines_clicked();
    void on_btnColorPolys_clicked();
    void on_btnColorAreas_clicked();
    void on_btnColorStrings_clicked();

private:
    struct Tab;
    Tab tab(int nDataType);
    void showSelected(const Tab &cTab);

public:
    Ui::DlgDrawingConfig *ui;
    QString m_strConfigStr;
    int m_nCurrentRow;              ///< of the selected parameter in its table, -1 when none is
    int m_nCurrentTable;            ///< data type of that table
    QMap<int, int> m_mapDIBParamID; ///< row -> ID, as the next
    QMap<int, int> m_mapGray8ParamID;
    QMap<int, int> m_mapGray16ParamID;
    QMap<int, int> m_mapPointsParamID;
    QMap<int, int> m_mapLinesParamID;
    QMap<int, int> m_mapPolysParamID;
    QMap<int, int> m_mapAreasParamID;
    QMap<int, int> m_mapStringsParamID;
    QMap<int, int> m_mapDIBParamIDR; ///< ID -> row, as the next
    QMap<int, int> m_mapGray8ParamIDR;
    QMap<int, int> m_mapGray16ParamIDR;
    QMap<int, int> m_mapPointsParamIDR;
    QMap<int, int> m_mapLinesParamIDR;
    QMap<int, int> m_mapPolysParamIDR;
    QMap<int, int> m_mapAreasParamIDR;
    QMap<int, int> m_mapStringsParamIDR;
    ArithmParamMgr *m_pcAPM;
};

#endif
