#ifndef MEMORYDISKCALLBACK_H
#define MEMORYDISKCALLBACK_H

#include <mutex>

#include <QMap>

#include "MemoryDisk/memorydisk.h"
#include "oculinexqtstandalone_export.h"

/// The data-source kind that reads memory disk nDisk. It has no configuration and reports no
/// errors. The picture that an instance holds between request and release is a record of the
/// memory disk, read in place.
///
/// Threads: any, as long as one instance is used by one thread at a time. The maps are guarded; no
/// lock is held while the memory disk is waited for.
template <int nDisk>
class OCULINEXQTSTANDALONE_EXPORT MemoryDiskCallBack
{
public:
    /// Waits at most 1000 ms. Types are told by their first letters: "RGB…" or "Gray8…"; for
    /// another type, and when there is no picture, null and sizes that were not touched.
    static unsigned char *MemoryDiskRequestPicture(int nInstanceID, const char *szType, int *pnWidth,
                                                   int *pnHeight);
    static void MemoryDiskReleasePicture(int nInstanceID);
    static char *MemoryDiskShowConfigDlg(char *pchConfig, bool bFlag);
    static void MemoryDiskSetConfig(int nInstanceID, char *pchConfig);
    static void MemoryDiskStart(int nInstanceID);
    static void MemoryDiskStop(int nInstanceID);
    static void MemoryDiskRemoveInstance(int nInstanceID);
    static char *MemoryDiskGetLastError(int nInstanceID);

    static int s_nPos; ///< the memory disk
    /// The record that each instance holds, by instance ID; null when it holds none. Never
    /// destroyed, since a task's thread may still run at process exit.
    static QMap<int, MemoryDisk::DIB *> &s_mapDIB;
    static QMap<int, MemoryDisk::Gray8 *> &s_mapGray8;
    static char s_achBlank[1];
    static std::mutex s_cMutexForMaps;
};

using MemoryDiskCallBack0 = MemoryDiskCallBack<0>;
using MemoryDiskCallBack1 = MemoryDiskCallBack<1>;
using MemoryDiskCallBack2 = MemoryDiskCallBack<2>;
using MemoryDiskCallBack3 = MemoryDiskCallBack<3>;
using MemoryDiskCallBack4 = MemoryDiskCallBack<4>;
using MemoryDiskCallBack5 = MemoryDiskCallBack<5>;

extern template class MemoryDiskCallBack<0>;
extern template class MemoryDiskCallBack<1>;
extern template class MemoryDiskCallBack<2>;
extern template class MemoryDiskCallBack<3>;
extern template class MemoryDiskCallBack<4>;
extern template class MemoryDiskCallBack<5>;

#endif
