#ifndef GLOBALFUNCTION_H
#define GLOBALFUNCTION_H

#include <QMutex>
#include <QObject>
#include <QString>

#include "Drawing/drawing.h"
#include "oculinexqtstandalone_export.h"

/// What every part of the library shares: the reader of tagged text, and the views.
///
/// Tagged text frames a value by a begin and an end marker, as in "<Tag>value</Tag>". Markers are
/// matched case-insensitively at their first occurrence; there is no nesting and no escaping. An
/// empty value and a missing tag cannot be told apart.
///
/// A view is a numbered target (0 to 5) that the host shows. It has no pixels of its own, only a
/// short queue of drawing objects: task threads push, whoever reads the view pops and draws.
///
/// Threads: the text functions touch only their arguments. The views may be used by any thread;
/// the view's lock (from request to release) comes first, the lock of its queue inside it.
class OCULINEXQTSTANDALONE_EXPORT GlobalFunction : public QObject
{
    Q_OBJECT

public:
    static constexpr int VIEW_NUM = Drawing::VIEW_NUM;

    /// The canvas of one view: its queue and the size that the host announced.
    class OCULINEXQTSTANDALONE_EXPORT ViewDrawOption
    {
    public:
        static constexpr int QUEUE_LENGTH = 10;

        ViewDrawOption();
        /// Leaves queued objects alone.
        ~ViewDrawOption();
        ViewDrawOption(const ViewDrawOption &) = delete;
        ViewDrawOption &operator=(const ViewDrawOption &) = delete;

        /// Takes the object over; null is ignored. A full queue destroys its oldest object.
        void pushDrawingOpt(Drawing::DrawingOpt *pcOpt);
        /// The oldest object, which the caller then owns; null when there is none.
        Drawing::DrawingOpt *popDrawingOpt();
        bool haveDrawingOpt();

        QMutex m_cMutex;                            ///< guards the queue
        int m_nDOPos = 0;                           ///< number of queued objects
        Drawing::DrawingOpt *m_apcDO[QUEUE_LENGTH]; ///< oldest first; meaningless from m_nDOPos on
        int m_nViewWidth = 0;                       ///< pixels
        int m_nViewHeight = 0;
    };

    GlobalFunction();

    /// The one instance, never destroyed.
    static GlobalFunction *getInstance();

    /// Makes the view if there is none and notes its size; a queue that exists is kept.
    void addView(int nView, int nWidth, int nHeight);
    void resizeViewCanvas(int nView, int nWidth, int nHeight);
    /// Drops the view with what is queued in it. A canvas that someone holds meanwhile stays valid.
    void removeView(int nView);
    /// Locks a view and returns its canvas, to be given back with releaseViewDrawOption by the same
    /// thread; null, and nothing locked, when there is no such view.
    ViewDrawOption *requestViewDrawOption(int nView);
    void releaseViewDrawOption(int nView, ViewDrawOption *pcCanvas);

    /// The text between the first begin marker and the first end marker of strSource, both searched
    /// from the start; empty when the end marker does not stand after the begin marker.
    static QString getBody(QString strSource, QString strBegin, QString strEnd);
    /// The same, and removes the body together with its markers from strSource.
    static QString getAndRemoveBody(QString &strSource, QString strBegin, QString strEnd);
    /// Strips spaces, carriage returns and line feeds (and nothing else) from both ends.
    static void trimString(QString &strText);

    QMutex m_cMutexForCanvasArray; ///< guards making and removing canvases
    QMutex m_cMutexForCanvas[VIEW_NUM];
    ViewDrawOption *m_apcViewCanvas[VIEW_NUM];
    bool m_abViewUpdated[VIEW_NUM]; ///< not used

    static GlobalFunction *s_pcInstance;
    static QMutex s_cMtxForIns;
};

#endif
