#ifndef ARITHMPARAMMGR_H
#define ARITHMPARAMMGR_H

/// @file
/// The parameter store through which the steps of one task hand data to each other.
///
/// A store holds eleven kinds of parameters, each kind under integer IDs of its own. It owns every
/// parameter in its maps and every pixel buffer: callers never free either.
///
/// Threads: every accessor (getters, setters, adders, resize, getParam…, removeParam…, clean and
/// the snapshot functions) may be called by any thread at any time. What they cannot protect is
/// what a caller does with a pointer or a public member afterwards: the pixels of a picture, the
/// public lists and the maps are walked only by the thread that runs the task, or while the task is
/// idle. Other threads use the snapshot functions. No lock is held while another is waited for.
///
/// Errors: nothing throws. A picture whose size is negative, overflows or cannot be allocated is
/// empty (null buffer, 0 x 0); a bad list index makes the getter or setter return 0.
///
/// The order of the members is part of the binary interface.

#include <QList>
#include <QMap>
#include <QMutex>
#include <QString>

#include <pthread.h>

#include "arithmparammgr_export.h"

/// Text for hosts that compare versions: "ArithmParamMgr version mismatch.".
extern ARITHMPARAMMGR_EXPORT char gszErrVerMsg[33];

/// What all parameters have in common. A parameter that is built outside a store (ID 0 until set)
/// works like one of the store's.
class ARITHMPARAMMGR_EXPORT ArithmParam
{
public:
    ArithmParam();
    explicit ArithmParam(int nID);
    ~ArithmParam();
    ArithmParam(const ArithmParam &) = delete;
    ArithmParam &operator=(const ArithmParam &) = delete;

    int getID() const;
    QString getName() const;
    void setName(QString strName);
    QString getDescribe() const;
    void setDescribe(QString strDescribe);

    QString m_strName;     ///< short display name
    QString m_strDescribe; ///< longer description
    int m_nID;             ///< the ID under which the store keeps the parameter
};

/// A colour picture: 24 bits a pixel in the order blue, green, red; rows from the top down, each
/// padded to a multiple of 4 bytes: ((width + 1) * 3) & ~3 bytes a row.
class ARITHMPARAMMGR_EXPORT ParamDIB : public ArithmParam
{
public:
    ParamDIB();
    explicit ParamDIB(int nID);
    ~ParamDIB();

    int getWidth() const;
    int getHeight() const;
    /// The pixels, to be read and written in place; null while the picture is empty. Valid until
    /// the next resize.
    unsigned char *getDIB() const;
    /// Makes the picture nWidth x nHeight. Contents are undefined afterwards, but memory that was
    /// newly allocated is 0. A buffer that is large enough is kept, so that pictures of one size
    /// allocate once. A size that is negative, overflows or cannot be allocated, and a width or
    /// height of 0, leave the picture empty; so does a picture of 2 GiB or more, whose bytes an int
    /// cannot count. Buffers are aligned to 64 bytes.
    void resize(int nWidth, int nHeight);

    unsigned char *m_puchDIB;
    int m_nWidth;  ///< pixels
    int m_nHeight; ///< rows
};

/// A grey picture: one byte a pixel, rows from the top down without padding.
class ARITHMPARAMMGR_EXPORT ParamGray8 : public ArithmParam
{
public:
    ParamGray8();
    explicit ParamGray8(int nID);
    ~ParamGray8();

    int getWidth() const;
    int getHeight() const;
    unsigned char *getGray8() const;      ///< as ParamDIB::getDIB
    void resize(int nWidth, int nHeight); ///< as ParamDIB::resize

    unsigned char *m_puchGray8;
    int m_nWidth;
    int m_nHeight;
};

/// A grey picture of 16 bits a pixel (native byte order), rows from the top down without padding.
class ARITHMPARAMMGR_EXPORT ParamGray16 : public ArithmParam
{
public:
    ParamGray16();
    explicit ParamGray16(int nID);
    ~ParamGray16();

    int getWidth() const;
    int getHeight() const;
    unsigned short *getGray16() const;    ///< as ParamDIB::getDIB
    void resize(int nWidth, int nHeight); ///< as ParamDIB::resize

    unsigned short *m_punGray16;
    int m_nWidth;
    int m_nHeight;
};

/// A list of points. As in every list parameter, the getters and setters return non-zero on
/// success and zero when an index is out of range; get…s() copies the whole list at one moment
/// (the copy shares nothing with the list) and set…s() replaces it at one moment, so that a
/// reader in another thread sees the old or the new list and nothing between.
class ARITHMPARAMMGR_EXPORT ParamPoints : public ArithmParam
{
public:
    struct Point {
        int x;
        int y;
    };

    ParamPoints();
    explicit ParamPoints(int nID);
    ~ParamPoints();

    int getPointNum() const;
    int getPoint(Point &cPoint, int nIndex) const;
    int setPoint(const Point &cPoint, int nIndex);
    void addPoint(const Point &cPoint);
    void clearPoints();
    QList<Point> getPoints() const;
    void setPoints(const QList<Point> &lstPoints);

    QList<Point> m_lstPoints;
};

/// A list of lines from (sx, sy) to (ex, ey).
class ARITHMPARAMMGR_EXPORT ParamLines : public ArithmParam
{
public:
    struct Line {
        int sx;
        int sy;
        int ex;
        int ey;
    };

    ParamLines();
    explicit ParamLines(int nID);
    ~ParamLines();

    int getLineNum() const;
    int getLine(Line &cLine, int nIndex) const;
    int setLine(const Line &cLine, int nIndex);
    void addLine(const Line &cLine);
    void clearLines();
    QList<Line> getLines() const;
    void setLines(const QList<Line> &lstLines);

    QList<Line> m_lstLines;
};

/// A list of polygons.
class ARITHMPARAMMGR_EXPORT ParamPolys : public ArithmParam
{
public:
    struct Point {
        int x;
        int y;
    };
    struct Poly {
        QList<Point> verts;
    };

    ParamPolys();
    explicit ParamPolys(int nID);
    ~ParamPolys();

    int getPolyNum() const;
    int getPolyVertNum(int nPoly) const; ///< 0 for a polygon that does not exist
    int getPolyVert(Point &cPoint, int nPoly, int nVert) const;
    int setPolyVert(const Point &cPoint, int nPoly, int nVert);
    int addPolyVert(const Point &cPoint, int nPoly); ///< appends a corner to polygon nPoly
    int getPoly(Poly &cPoly, int nIndex) const;
    int setPoly(const Poly &cPoly, int nIndex);
    void addPoly(const Poly &cPoly);
    void clearPolys();
    QList<Poly> getPolys() const;
    void setPolys(const QList<Poly> &lstPolys);

    QList<Poly> m_lstPolys;
};

/// A list of areas.
class ARITHMPARAMMGR_EXPORT ParamAreas : public ArithmParam
{
public:
    struct Area {
        int size;      ///< pixels
        int bounds[4]; ///< bounding rectangle: top y, bottom y, left x, right x (all inside)
        int seedx;     ///< a pixel inside the area
        int seedy;
    };

    ParamAreas();
    explicit ParamAreas(int nID);
    ~ParamAreas();

    int getAreaNum() const;
    int getArea(Area &cArea, int nIndex) const;
    int setArea(const Area &cArea, int nIndex);
    void addArea(const Area &cArea);
    void clearAreas();
    QList<Area> getAreas() const;
    void setAreas(const QList<Area> &lstAreas);

    QList<Area> m_lstAreas;
};

/// A list of texts.
class ARITHMPARAMMGR_EXPORT ParamStrings : public ArithmParam
{
public:
    ParamStrings();
    explicit ParamStrings(int nID);
    ~ParamStrings();

    int getStringNum() const;
    /// Length of a string in bytes of UTF-8; 0 for a bad index.
    int getStringLen(int nIndex) const;
    /// Copies at most nBuffLen bytes of UTF-8 into szBuff, without a terminating zero, and returns
    /// their number; 0 for a bad index, a null buffer or a length below 1.
    int getString(char *szBuff, int nBuffLen, int nIndex) const;
    int setString(const QString &strText, int nIndex);
    void addString(const QString &strText);
    void clearStrings();
    QList<QString> getStrings() const;
    void setStrings(const QList<QString> &lstStrings);

    QList<QString> m_lstStrings;
};

/// A list of integers.
class ARITHMPARAMMGR_EXPORT ParamLongs : public ArithmParam
{
public:
    ParamLongs();
    explicit ParamLongs(int nID);
    ~ParamLongs();

    int getLongNum() const;
    int getLong(long &nValue, int nIndex) const;
    int setLong(long nValue, int nIndex);
    void addLong(long nValue);
    void clearLongs();
    QList<long> getLongs() const;
    void setLongs(const QList<long> &lstLongs);

    QList<long> m_lstLongs;
};

/// A list of floating-point numbers.
class ARITHMPARAMMGR_EXPORT ParamDoubles : public ArithmParam
{
public:
    ParamDoubles();
    explicit ParamDoubles(int nID);
    ~ParamDoubles();

    int getDoubleNum() const;
    int getDouble(double &dValue, int nIndex) const;
    int setDouble(double dValue, int nIndex);
    void addDouble(double dValue);
    void clearDoubles();
    QList<double> getDoubles() const;
    void setDoubles(const QList<double> &lstDoubles);

    QList<double> m_lstDoubles;
};

/// A list of flags.
class ARITHMPARAMMGR_EXPORT ParamBools : public ArithmParam
{
public:
    ParamBools();
    explicit ParamBools(int nID);
    ~ParamBools();

    int getBoolNum() const;
    int getBool(bool &bValue, int nIndex) const;
    int setBool(bool bValue, int nIndex);
    void addBool(bool bValue);
    void clearBools();
    QList<bool> getBools() const;
    void setBools(const QList<bool> &lstBools);

    QList<bool> m_lstBools;
};

/// One task's parameter store.
class ARITHMPARAMMGR_EXPORT ArithmParamMgr
{
public:
    /// A resource of which a bounded number may be held at once by all tasks together.
    class ARITHMPARAMMGR_EXPORT Resource
    {
    public:
        /// Needs no code before main() and none at exit: static constructors and threads that
        /// outlive main() may use resources.
        constexpr Resource() {}
        Resource(const Resource &) = delete;
        Resource &operator=(const Resource &) = delete;

        void request();             ///< waits until fewer than the maximum are held, then holds one
        void release();             ///< gives one back; ignored when none is held
        void setMaxCount(int nMax); ///< at least 1

        pthread_cond_t m_cCond = PTHREAD_COND_INITIALIZER;
        pthread_mutex_t m_cMutex = PTHREAD_MUTEX_INITIALIZER;
        int m_nMaxCount = 1;
        int m_nCurCount = 0; ///< how many are held now
    };

    /// The kinds of parameters, in the order of the maps.
    enum class Kind { DIB, Gray8, Gray16, Points, Lines, Polys, Areas, Strings, Longs, Doubles, Bools };

    /// What a store held under one ID when it was looked at.
    struct Entry {
        Kind m_eKind;
        int m_nID;
        QString m_strName;
        QString m_strDescribe;
        int m_nWidth;  ///< pictures only, else 0
        int m_nHeight; ///< pictures only, else 0
        int m_nCount;  ///< number of elements of a list, else 0
    };

    static constexpr int RESOURCE_NUM = 10;
    static constexpr int SHARE_NUM = 256;

    static ArithmParamMgr *newInstance();
    /// Destroys a store and everything in it; null is ignored.
    static void deleteInstance(ArithmParamMgr *pcAPM);

    ArithmParamMgr();
    ~ArithmParamMgr();
    ArithmParamMgr(const ArithmParamMgr &) = delete;
    ArithmParamMgr &operator=(const ArithmParamMgr &) = delete;

    /// Removes and frees every parameter of every kind. An ID that was handed out as a fresh one
    /// before is never handed out again.
    void clean();

    /// The parameter with that ID, created empty under it if there is none; never null. -1 makes a
    /// new parameter under a fresh ID of at least 1.
    ParamDIB *getParamDIB(int nID);
    ParamGray8 *getParamGray8(int nID);
    ParamGray16 *getParamGray16(int nID);
    ParamPoints *getParamPoints(int nID);
    ParamLines *getParamLines(int nID);
    ParamPolys *getParamPolys(int nID);
    ParamAreas *getParamAreas(int nID);
    ParamStrings *getParamStrings(int nID);
    ParamLongs *getParamLongs(int nID);
    ParamDoubles *getParamDoubles(int nID);
    ParamBools *getParamBools(int nID);

    /// The store's own map of one kind, in ascending order of IDs; never to be changed or freed.
    QMap<int, ParamDIB *> *requestParamDIBMap();
    QMap<int, ParamGray8 *> *requestParamGray8Map();
    QMap<int, ParamGray16 *> *requestParamGray16Map();
    QMap<int, ParamPoints *> *requestParamPointsMap();
    QMap<int, ParamLines *> *requestParamLinesMap();
    QMap<int, ParamPolys *> *requestParamPolysMap();
    QMap<int, ParamAreas *> *requestParamAreasMap();
    QMap<int, ParamStrings *> *requestParamStringsMap();
    QMap<int, ParamLongs *> *requestParamLongsMap();
    QMap<int, ParamDoubles *> *requestParamDoublesMap();
    QMap<int, ParamBools *> *requestParamBoolsMap();

    /// Removes and frees the parameter with that ID, if there is one.
    void removeParamDIB(int nID);
    void removeParamGray8(int nID);
    void removeParamGray16(int nID);
    void removeParamPoints(int nID);
    void removeParamLines(int nID);
    void removeParamPolys(int nID);
    void removeParamAreas(int nID);
    void removeParamStrings(int nID);
    void removeParamLongs(int nID);
    void removeParamDoubles(int nID);
    void removeParamBools(int nID);

    /// What the store holds, by kind and ascending ID, at one moment.
    QList<Entry> snapshot() const;
    /// Copies of one list at one moment, safe against a task that fills it and against clean() and
    /// removeParam…(); empty when there is no such parameter (none is created). The name goes to
    /// pstrName unless that is null.
    QList<ParamPoints::Point> snapshotPoints(int nID, QString *pstrName = nullptr) const;
    QList<ParamLines::Line> snapshotLines(int nID, QString *pstrName = nullptr) const;
    QList<ParamPolys::Poly> snapshotPolys(int nID, QString *pstrName = nullptr) const;
    QList<ParamAreas::Area> snapshotAreas(int nID, QString *pstrName = nullptr) const;
    QList<QString> snapshotStrings(int nID, QString *pstrName = nullptr) const;

    /// Holds one of the counted resources 0 to 9, waiting for as long as it takes; returns zero at
    /// once for another number. Whoever holds one may be any thread, and any thread may give it back.
    static int requestResource(int nIndex);
    static int releaseResource(int nIndex);
    /// The shared variables 0 to 255 of the process, guarded by s_cMutexForVar; another number reads
    /// 0 and writes nothing. A caller that holds that mutex, to read and write at one moment, uses
    /// s_anShare itself.
    static long long getInt64(int nIndex);
    static void setInt64(int nIndex, long long nValue);

    const QString VERSION; ///< "1.0"
    QMap<int, ParamDIB *> m_mapParamDIB;
    QMap<int, ParamGray8 *> m_mapParamGray8;
    QMap<int, ParamGray16 *> m_mapParamGray16;
    QMap<int, ParamPoints *> m_mapParamPoints;
    QMap<int, ParamLines *> m_mapParamLines;
    QMap<int, ParamPolys *> m_mapParamPolys;
    QMap<int, ParamAreas *> m_mapParamAreas;
    QMap<int, ParamStrings *> m_mapParamStrings;
    QMap<int, ParamLongs *> m_mapParamLongs;
    QMap<int, ParamDoubles *> m_mapParamDoubles;
    QMap<int, ParamBools *> m_mapParamBools;

    static Resource s_acResource[RESOURCE_NUM];
    static QMutex s_cMutexForVar;
    static long long s_anShare[SHARE_NUM];
};

#endif
