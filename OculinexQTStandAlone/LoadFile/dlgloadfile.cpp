#include "LoadFile/dlgloadfile.h"

#include <utility>

#include <QFileDialog>
#include <QMessageBox>

#include "LoadFile/ui_dlgloadfile.h"
#include "arithmparammgr.h"
#include "configtext.h"
#include "dialogs.h"
#include "picturefile.h"

namespace
{
enum PicType { Colour, Grey };

void warn(QWidget *pcParent, const QString &strText)
{
    QMessageBox::about(pcParent, QStringLiteral("警告"), strText);
}
} // namespace

DlgLoadFile::DlgLoadFile(QString strConfig, ArithmParamMgr *pcAPM, QWidget *pcParent)
    : QDialog(pcParent),
      ui(new Ui::DlgLoadFile),
      m_nOutputPicType(Colour),
      m_nOutputPicID(-1),
      m_strConfigStr(strConfig),
      m_pcAPM(pcAPM)
{
    ui->setupUi(this);
    parseConfigString();
}

DlgLoadFile::~DlgLoadFile()
{
    delete ui;
}

QString DlgLoadFile::getConfigString()
{
    return m_strConfigStr;
}

void DlgLoadFile::parseConfigString()
{
    if (m_strConfigStr.isEmpty())
        return;
    const ConfigText cConfig(m_strConfigStr);
    const bool bGrey = cConfig.number("BeGray") == 1;
    (bGrey ? ui->rbGray : ui->rbRGB)->setChecked(true); // decides how large a picture may be
    ui->edtOutputName->setText(cConfig.text("OutputName"));
    ui->edtPicDescribe->setText(cConfig.text("Describe"));
    m_nOutputPicType = cConfig.number("PicType");
    bool bNumber = false;
    const int nID = cConfig.number("PicID", &bNumber);
    m_nOutputPicID = bNumber ? nID : -1;
    setCurFile(cConfig.text("FilePath")); // last: its box may outlive the dialog
}

void DlgLoadFile::setCurFile(QString strPath)
{
    ui->edtFilePath->clear();
    QString strError;
    QImage cImage = PictureFile::read(strPath, ui->rbGray->isChecked(), strError);
    if (cImage.isNull()) {
        qCWarning(lcFile).noquote() << "cannot load" << strPath + QLatin1Char(':') << strError;
        return warn(this, QStringLiteral("不支持的文件格式."));
    }
    if (cImage.format() != QImage::Format_Indexed8 &&
        std::move(cImage).convertToFormat(QImage::Format_RGB888).isNull())
        return warn(this, QStringLiteral("仅支持8位和24位."));
    ui->edtFilePath->setText(strPath);
    m_strFilePath = strPath;
}

bool DlgLoadFile::createConfigString()
{
    if (!m_pcAPM)
        return false;
    if (m_strFilePath.isEmpty()) {
        warn(this, QStringLiteral("未选中图片."));
        return false;
    }
    const QString strName = ui->edtOutputName->text();
    const QString strDescribe = ui->edtPicDescribe->text();
    if (strName.isEmpty()) {
        warn(this, QStringLiteral("未定义输出名称."));
        return false;
    }

    const int nPicType = ui->rbGray->isChecked() ? Grey : Colour;
    // A config string may tell of neither kind: what has that ID is left alone then.
    const bool bOtherKind = m_nOutputPicType == (nPicType == Grey ? Colour : Grey);
    // A host may have started the task meanwhile: then the old picture stays, and so does the config.
    if (bOtherKind && m_nOutputPicID >= 0 && !isStoreInUse(m_pcAPM)) {
        if (m_nOutputPicType == Grey)
            m_pcAPM->removeParamGray8(m_nOutputPicID);
        else
            m_pcAPM->removeParamDIB(m_nOutputPicID);
    }
    if (bOtherKind || m_nOutputPicID < 0) {
        ArithmParam *pcOutput = nullptr;
        if (nPicType == Grey)
            pcOutput = m_pcAPM->getParamGray8(-1);
        else
            pcOutput = m_pcAPM->getParamDIB(-1);
        pcOutput->setName(strName);
        pcOutput->setDescribe(strDescribe);
        m_nOutputPicID = pcOutput->getID();
    }
    m_nOutputPicType = nPicType;
    m_strConfigStr = tagged("FilePath", m_strFilePath) + tagged("OutputName", strName) +
                     tagged("Describe", strDescribe) + tagged("BeGray", QString::number(nPicType)) +
                     tagged("PicType", QString::number(m_nOutputPicType)) +
                     tagged("PicID", QString::number(m_nOutputPicID));
    return true;
}

void DlgLoadFile::on_btnOK_clicked()
{
    if (createConfigString())
        accept();
}

void DlgLoadFile::on_btnCancel_clicked()
{
    reject();
}

void DlgLoadFile::on_btnBrowser_clicked()
{
    auto *pcDialog = new QFileDialog(this, QStringLiteral("打开图像文件"), QStringLiteral("."),
                                     QStringLiteral("Images (*.png *.bmp *.jpg)"));
    pcDialog->setFileMode(QFileDialog::ExistingFile);
    runChild(pcDialog, [this](const QFileDialog &cDialog) {
        if (cDialog.result() == Accepted && !cDialog.selectedFiles().isEmpty())
            setCurFile(cDialog.selectedFiles().constFirst());
    });
}
