#ifndef DRAWINGREGISTRY_H
#define DRAWINGREGISTRY_H

#include "Drawing/drawing.h"

/// Which queued drawing reads from which store, so that a store can die while drawings that would
/// read it are still queued or in a reader's hands. The table stands beside the objects, since a
/// host may make such objects itself.
///
/// Threads: any; one leaf lock, held for the look-up only.
namespace DrawingRegistry
{
/// Notes an object that is being queued, with its m_pcAPM.
void add(const Drawing::DrawingOpt *pcOpt);
/// Forgets an object that goes.
void remove(const Drawing::DrawingOpt *pcOpt);
/// Keeps every object that was queued with this store from reading it, and waits for those that do
/// so right now.
void disarm(const ArithmParamMgr *pcAPM);

/// Leave to read the store for as long as it stands. There is none for a store that has died; an
/// object that was never queued is its caller's business.
class Permit
{
public:
    Permit(const Drawing::DrawingOpt *pcOpt, const ArithmParamMgr *pcAPM);
    ~Permit();
    Permit(const Permit &) = delete;
    Permit &operator=(const Permit &) = delete;
    explicit operator bool() const { return m_bGranted; }

private:
    const Drawing::DrawingOpt *m_pcCounted = nullptr; ///< the object whose entry counts this reader
    bool m_bGranted = true;
};
} // namespace DrawingRegistry

#endif
