#ifndef DRAWING_H
#define DRAWING_H

#include <QString>

#include "oculinexqtstandalone_export.h"

class ArithmParamMgr;
class QImage;

/// The drawing algorithm: turns a picture or a list of the task's store into one drawing object and
/// queues it in a view, from where the host renders it later.
///
/// Threads: execute() runs on task threads, draw() on the thread that reads the view,
/// showConfigWindow() on the GUI thread.
class OCULINEXQTSTANDALONE_EXPORT Drawing
{
public:
    static constexpr int VIEW_NUM = 6;

    /// How picture coordinates become pixels of a view: (coordinate - offset) / scale, truncated.
    /// Drawing a picture sets it, drawing a list reads it. Use getViewScaleOpt and setViewScaleOpt.
    struct ViewScaleOpt {
        float m_afScale[2] = {1.0F, 1.0F}; ///< picture pixels per view pixel, across and down
        int m_anOffset[2] = {0, 0};        ///< picture coordinate that lands on view pixel 0
    };

    /// One thing to be painted. Whoever takes it out of a view's queue owns it, draws it once and
    /// deletes it.
    class OCULINEXQTSTANDALONE_EXPORT DrawingOpt
    {
    public:
        explicit DrawingOpt(int nDataID);
        virtual ~DrawingOpt();
        DrawingOpt(const DrawingOpt &) = delete;
        DrawingOpt &operator=(const DrawingOpt &) = delete;

        /// Paints the object into pcTarget (RGB888), reading lists from the store. Does nothing when
        /// either is null, and for a queued list whose store has died.
        virtual void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) = 0;

        int getDataType() const { return m_nDataType; }
        int getDataID() const { return m_nDataID; }
        void setViewID(int nViewID) { m_nViewID = nViewID; }
        int getViewID() const { return m_nViewID; }

        ArithmParamMgr *m_pcAPM = nullptr; ///< the store to draw from, not owned; set when queued
        int m_nDataType = 0;               ///< 0 colour, 1 Gray8, 2 Gray16, 3 points ... 7 strings
        int m_nDataID;                     ///< ID of the parameter in the store
        int m_nViewID = 0;                 ///< selects the scale record
    };

    // Pictures copy their pixels when they are made. A null pointer and a size that is below 1,
    // overflows or cannot be allocated give an object that draws nothing.
    //
    // Scale type: 0 original size, 1 fit width, 2 fit height, 3 scale to window. Align type, for
    // original size only: 0 centred, else at the origin.

    /// A colour picture: rows of blue, green, red, padded to a multiple of 4 bytes. Drawing it
    /// exchanges red and blue in its own copy.
    class OCULINEXQTSTANDALONE_EXPORT DIBDrawingOpt : public DrawingOpt
    {
    public:
        DIBDrawingOpt(int nDataID, unsigned char *puchDIB, int nWidth, int nHeight);
        ~DIBDrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        void setScaleType(int nType) { m_nScaleType = nType; }
        void setAlignType(int nType) { m_nAlignType = nType; }
        int getScaleType() const { return m_nScaleType; }
        int getAlignType() const { return m_nAlignType; }

        int m_nScaleType = 0;
        int m_nAlignType = 0;
        unsigned char *m_puchData; ///< own copy
        int m_nWidth;
        int m_nHeight;
    };

    /// What both kinds of grey pictures can be told.
    ///
    /// Draw mode: 0 normal, 1 overlay in which 0 is transparent, 2 mask. An overlay is grey (lapped
    /// type 0) or in the colours of the table. A mask paints where the pixel is 0 (mask value 0),
    /// where it is not (1) or everywhere, in black (mask colour 0), white (1), red (2) or not at all.
    class OCULINEXQTSTANDALONE_EXPORT GrayDrawingOpt : public DrawingOpt
    {
    public:
        using DrawingOpt::DrawingOpt;

        void setScaleType(int nType) { m_nScaleType = nType; }
        void setAlignType(int nType) { m_nAlignType = nType; }
        void setDrawMode(int nMode) { m_nDrawMode = nMode; }
        void setLapped(int nLapped) { m_nLapped = nLapped; }
        void setMaskVal(int nVal) { m_nMaskVal = nVal; }
        void setMaskColor(int nColor) { m_nMaskCr = nColor; }
        int getScaleType() const { return m_nScaleType; }
        int getAlignType() const { return m_nAlignType; }
        int getDrawMode() const { return m_nDrawMode; }
        int getLapped() const { return m_nLapped; }
        int getMaskVal() const { return m_nMaskVal; }
        int getMaskColor() const { return m_nMaskCr; }

        int m_nScaleType = 0;
        int m_nAlignType = 0;
        int m_nDrawMode = 0;
        int m_nLapped = 0;
        int m_nMaskVal = 0;
        int m_nMaskCr = 0;
    };

    /// An 8-bit grey picture without row padding.
    class OCULINEXQTSTANDALONE_EXPORT Gray8DrawingOpt : public GrayDrawingOpt
    {
    public:
        Gray8DrawingOpt(int nDataID, unsigned char *puchGray8, int nWidth, int nHeight);
        ~Gray8DrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        unsigned int m_anColourTable[256]; ///< 0xAARRGGBB, for the overlay in colours
        unsigned char *m_puchData;         ///< own copy
        int m_nWidth;
        int m_nHeight;
    };

    /// A 16-bit grey picture without row padding. It is taken from the queue like the others and
    /// paints nothing.
    class OCULINEXQTSTANDALONE_EXPORT Gray16DrawingOpt : public GrayDrawingOpt
    {
    public:
        Gray16DrawingOpt(int nDataID, unsigned char *puchGray16, int nWidth, int nHeight);
        ~Gray16DrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        unsigned char *m_puchData; ///< own copy
        int m_nWidth;
        int m_nHeight;
    };

    // Lists hold only the ID and show the list as it is when they are drawn. Colours are 0xAARRGGBB;
    // alpha is ignored. What cannot be placed (scale 0, overflow) is not drawn.

    /// Points: single pixels (size below 1) or crosses with arms of that many pixels.
    class OCULINEXQTSTANDALONE_EXPORT PointsDrawingOpt : public DrawingOpt
    {
    public:
        explicit PointsDrawingOpt(int nDataID);
        ~PointsDrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        void setSize(int nSize) { m_nSize = nSize; }
        void setColor(int nColor) { m_nColor = nColor; }
        int getSize() const { return m_nSize; }
        int getColor() const { return m_nColor; }

        int m_nSize = 0;
        int m_nColor = 0;
    };

    /// Lines, on request with their length in view pixels in the complement colour. After the first
    /// length every further line has the thin pen of that colour.
    class OCULINEXQTSTANDALONE_EXPORT LinesDrawingOpt : public DrawingOpt
    {
    public:
        explicit LinesDrawingOpt(int nDataID);
        ~LinesDrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        void setSize(int nSize) { m_nSize = nSize; }
        void setColor(int nColor) { m_nColor = nColor; }
        void setDisplayLength(bool bDisplay) { m_bDspLength = bDisplay; }
        int getSize() const { return m_nSize; }
        int getColor() const { return m_nColor; }
        bool getDisplayLength() const { return m_bDspLength; }

        int m_nSize = 1; ///< pen width
        int m_nColor = 0;
        bool m_bDspLength = false;
    };

    /// Closed polygons of 3 vertices or more, on request with their area in view pixels. Their
    /// borders exchange red and blue of the border colour; the area text does not, and its thin pen
    /// stays for the polygons that follow.
    class OCULINEXQTSTANDALONE_EXPORT PolysDrawingOpt : public DrawingOpt
    {
    public:
        explicit PolysDrawingOpt(int nDataID);
        ~PolysDrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        void setBorderSize(int nSize) { m_nBorderSize = nSize; }
        void setBorderColor(int nColor) { m_nBorderColor = nColor; }
        void setDisplayArea(bool bDisplay) { m_bDspArea = bDisplay; }
        int getBorderSize() const { return m_nBorderSize; }
        int getBorderColor() const { return m_nBorderColor; }
        bool getDisplayArea() const { return m_bDspArea; }

        /// Signed area by the side lengths; each corner is x, y.
        float getTriangleArea2D(float *pfA, float *pfB, float *pfC);
        /// Signed area of a fan of triangles from vertex 0; pfVert holds x0, y0, x1, y1 ...
        float getPolyArea2D(float *pfVert, int nVertNum);

        int m_nBorderSize = 0;
        int m_nBorderColor = 0;
        bool m_bDspArea = false;
    };

    /// Areas: bounding rectangle, a cross at the seed, on request the parameter's name.
    class OCULINEXQTSTANDALONE_EXPORT AreasDrawingOpt : public DrawingOpt
    {
    public:
        explicit AreasDrawingOpt(int nDataID);
        ~AreasDrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        void setColor(int nColor) { m_nColor = nColor; }
        void setDisplayArea(bool bDisplay) { m_bDspArea = bDisplay; }
        int getColor() const { return m_nColor; }
        bool getDisplayArea() const { return m_bDspArea; }

        int m_nColor = 0;
        bool m_bDspArea = false;
    };

    /// Texts below each other from a picture position on; each text has the line of its index.
    class OCULINEXQTSTANDALONE_EXPORT StringsDrawingOpt : public DrawingOpt
    {
    public:
        explicit StringsDrawingOpt(int nDataID);
        ~StringsDrawingOpt() override;
        void draw(QImage *pcTarget, ArithmParamMgr *pcAPM) override;

        void setColor(int nColor) { m_nColor = nColor; }
        int getColor() const { return m_nColor; }
        void setPos(int nX, int nY)
        {
            m_nX = nX;
            m_nY = nY;
        }
        void getPos(int &nX, int &nY) const
        {
            nX = m_nX;
            nY = m_nY;
        }
        void setFontSize(int nSize) { m_nFontSize = nSize; }
        int getFontSize() const { return m_nFontSize; }

        int m_nColor = 0;
        int m_nX = 0;
        int m_nY = 0;
        int m_nFontSize = 12; ///< pixels; drawing raises it to at least 5
    };

    static const char *getID(); ///< "KQ_Drawing"
    static QString getName();
    static QString getClass();
    /// Opens the configuration window; the new config string, empty when cancelled.
    static char *showConfigWindow(char *pchConfig, ArithmParamMgr *pcAPM, bool bFlag);
    /// Queues the object that the config string describes; always returns the empty text.
    static char *execute(char *pchConfig, ArithmParamMgr *pcAPM);
    /// The object that a config string describes, null if it describes none; the caller owns it.
    static DrawingOpt *parseConfigString(QString strConfig, ArithmParamMgr *pcAPM);
    static char *transConfigStr(QString &strText);

    /// Sets the record of view 0..5 back to scale 1 and offset 0.
    static void resetViewScaleOpt(int nView);
    /// The record of one view at one moment; that of an unknown view is scale 1 and offset 0.
    static ViewScaleOpt getViewScaleOpt(int nView);
    static void setViewScaleOpt(int nView, const ViewScaleOpt &cScale);

    /// To be called before a store dies: the queued list drawings that would read it draw nothing
    /// from now on, wherever they are. Waits only for one that reads the store right now.
    static void disarm(ArithmParamMgr *pcAPM);

    static const char *s_ID;
    static char *s_pchConfigStr;
    static int s_nBuffLen;
    static ViewScaleOpt s_acVSO[VIEW_NUM];
};

#endif
