#include "viewpane.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QImageWriter>
#include <QLabel>
#include <QMessageBox>
#include <QSaveFile>
#include <QToolBar>
#include <QVBoxLayout>

#include "viewfeed.h"

namespace
{
constexpr QSize SIZES[] = {{320, 240},  {640, 480},  {800, 600},  {1024, 768},
                           {1280, 720}, {1280, 960}, {1920, 1080}};
constexpr QSize DEFAULT_SIZE(640, 480);

QString sizeName(const QSize &cSize)
{
    return QStringLiteral("%1 × %2").arg(cSize.width()).arg(cSize.height());
}
} // namespace

ViewPane::ViewPane(int nView, QWidget *pcParent)
    : QWidget(pcParent),
      m_nView(nView),
      m_pcFeed(new ViewFeed(nView, DEFAULT_SIZE, this)),
      m_pcPicture(new Plugin::PictureView(this)),
      m_pcSize(new QComboBox(this)),
      m_pcPixel(new QLabel(this))
{
    m_pcPicture->setMinimumSize(160, 120);
    m_pcPicture->setObjectName(QStringLiteral("picture"));
    m_pcSize->setObjectName(QStringLiteral("cmbSize"));
    m_pcSize->setToolTip(tr("The size of the view in pixels, in which the tasks draw"));
    m_pcSize->addItem(tr("As the pane"), QSize());
    for (const QSize &cSize : SIZES)
        m_pcSize->addItem(sizeName(cSize), cSize);
    m_pcSize->setCurrentIndex(m_pcSize->findData(DEFAULT_SIZE));

    auto *const pcLayout = new QVBoxLayout(this);
    pcLayout->setContentsMargins(0, 0, 0, 0);
    pcLayout->setSpacing(2);
    auto *const pcTools = new QToolBar; // a narrow pane has the rest in the bar's own menu
    pcTools->addWidget(m_pcSize);
    const auto fnButton = [&](const QString &strName, const QString &strText, const QString &strTip,
                              const auto &fnClicked) {
        QAction *const pcAction = pcTools->addAction(strText);
        pcAction->setToolTip(strTip);
        connect(pcAction, &QAction::triggered, this, fnClicked);
        pcTools->widgetForAction(pcAction)->setObjectName(strName);
    };
    fnButton(QStringLiteral("btnWhole"), tr("Whole"), tr("Show the whole view (double click)"),
             [this] { m_pcPicture->setZoom(0); });
    fnButton(QStringLiteral("btnPixels"), tr("1:1"), tr("Show each pixel as one of the screen"),
             [this] { m_pcPicture->setZoom(1); });
    fnButton(QStringLiteral("btnSave"), tr("Save picture…"), tr("Save what is shown as a picture"),
             [this] { savePicture(); });
    fnButton(QStringLiteral("btnCopy"), tr("Copy"), tr("Copy what is shown to the clipboard"),
             [this] { copyPicture(); });
    pcLayout->addWidget(pcTools);
    pcLayout->addWidget(m_pcPicture, 1);
    pcLayout->addWidget(m_pcPixel);
    m_pcPixel->setContentsMargins(4, 0, 4, 2);
    tellPixel(m_cPixel);

    connect(m_pcFeed, &ViewFeed::ready, this, &ViewPane::showNewest);
    connect(m_pcPicture, &Plugin::PictureView::hovered, this, &ViewPane::tellPixel);
    connect(m_pcPicture, &Plugin::PictureView::zoomed, this, [this] {
        tellShrunkSize();
        emit settingsChanged();
    });
    connect(m_pcSize, QOverload<int>::of(&QComboBox::activated), this, [this] {
        applySize();
        emit settingsChanged();
    });
}

QSize ViewPane::viewSize() const
{
    return m_pcSize->currentData().toSize();
}

void ViewPane::setViewSize(const QSize &cSize)
{
    const QSize cChosen = cSize.isEmpty() ? QSize() : cSize.boundedTo({10000, 10000});
    int nIndex = m_pcSize->findData(cChosen);
    if (nIndex < 0) {
        nIndex = m_pcSize->count();
        m_pcSize->addItem(sizeName(cChosen), cChosen);
    }
    m_pcSize->setCurrentIndex(nIndex);
    applySize();
}

double ViewPane::zoom() const
{
    return m_pcPicture->zoom();
}

void ViewPane::setZoom(double dZoom)
{
    const QSignalBlocker cBlocker(this);
    m_pcPicture->setZoom(dZoom);
}

QImage ViewPane::picture() const
{
    return m_pcPicture->picture();
}

void ViewPane::setMirror(Plugin::PictureView *pcMirror)
{
    m_pcMirror = pcMirror;
    if (pcMirror)
        pcMirror->setPicture(picture());
    tellShrunkSize();
}

void ViewPane::savePicture()
{
    const QImage cPicture = picture(); // as it is now, not when the name is found
    if (cPicture.isNull())
        return;
    const QString strTitle = tr("Save view %1").arg(m_nView);
    QFileDialog cDialog(this, strTitle, QString(), tr("Pictures (*.png *.jpg *.bmp)"));
    cDialog.setAcceptMode(QFileDialog::AcceptSave);
    cDialog.setDefaultSuffix(QStringLiteral("png")); // before the dialog looks for what is there already
    cDialog.selectFile(tr("view%1.png").arg(m_nView));
    if (cDialog.exec() != QDialog::Accepted)
        return;
    const QString strFile = cDialog.selectedFiles().constFirst();
    QSaveFile cFile(strFile); // what is there already stays until the picture is whole
    QImageWriter cWriter(&cFile, QFileInfo(strFile).suffix().toLatin1());
    if (!cFile.open(QFile::WriteOnly) || !cWriter.write(cPicture) || !cFile.commit())
        QMessageBox::warning(
            this, strTitle,
            tr("%1 could not be written: %2")
                .arg(strFile, cFile.error() == QFile::NoError ? cWriter.errorString() : cFile.errorString()));
}

void ViewPane::copyPicture()
{
    if (!picture().isNull())
        QApplication::clipboard()->setImage(picture().copy());
}

void ViewPane::resizeEvent(QResizeEvent *)
{
    if (viewSize().isEmpty())
        applySize();
    tellShrunkSize();
}

void ViewPane::showNewest()
{
    const ViewFeed::Frame cFrame = m_pcFeed->take();
    if (cFrame.m_cPicture.isNull())
        return;
    m_pcPicture->setPicture(cFrame.m_cPicture, cFrame.m_cShrunk);
    if (m_pcMirror)
        m_pcMirror->setPicture(cFrame.m_cPicture, cFrame.m_cShrunk);
    tellShrunkSize();
    tellPixel(m_cPixel);
    emit updated();
}

void ViewPane::applySize()
{
    const QSize cSize = viewSize();
    m_pcFeed->setSize(cSize.isEmpty() ? m_pcPicture->size().expandedTo({1, 1}) : cSize);
}

void ViewPane::tellShrunkSize()
{
    m_pcFeed->setShrunkSize((m_pcMirror ? m_pcMirror.data() : m_pcPicture)->shrunkSize(picture().size()));
}

void ViewPane::tellPixel(const QPoint &cPixel)
{
    m_cPixel = cPixel;
    QString strText = tr("No picture yet");
    if (picture().valid(cPixel)) {
        const QColor cColour = picture().pixelColor(cPixel);
        strText = tr("%1, %2: red %3, green %4, blue %5")
                      .arg(cPixel.x())
                      .arg(cPixel.y())
                      .arg(cColour.red())
                      .arg(cColour.green())
                      .arg(cColour.blue());
    } else if (!picture().isNull()) {
        strText = sizeName(picture().size());
    }
    m_pcPixel->setText(strText);
}
