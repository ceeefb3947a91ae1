#ifndef BENCH_DRAWN_H
#define BENCH_DRAWN_H

#include <memory>

#include <opencv2/core.hpp>

#include "Drawing/drawing.h"
#include "arithmparammgr.h"
#include "table.h"

namespace Bench
{
std::shared_ptr<ArithmParamMgr> newStore();
/// The host's own memory, as in getDrawingWindow.
cv::Mat hostMemory(cv::Size cSize);
/// Draws the object again and again into the memory of a host.
Measure drawn(std::shared_ptr<Drawing::DrawingOpt> pcObject, std::shared_ptr<ArithmParamMgr> pcStore,
              cv::Size cSize);
} // namespace Bench

#endif
