#ifndef BENCH_CASES_H
#define BENCH_CASES_H

#include <opencv2/core.hpp>

#include "table.h"

/// The rows of the table, by subject.
namespace Bench
{
/// A photograph of that size, as the store lays pictures out.
cv::Mat photograph(int nWidth, int nHeight, bool bColour);
/// A new picture that holds the same pixels, laid out as in the store.
cv::Mat storeCopy(const cv::Mat &cPicture);

void addHandover(Table &cTable);
void addSteps(Table &cTable);
void addInspection(Table &cTable);
void addDrawing(Table &cTable);
void addDrawingLists(Table &cTable);
void addKernels(Table &cTable);
void addPictureFiles(Table &cTable);
void addTasksFile(Table &cTable);
void addLife(Table &cTable);

/// What the program is called with to do one thing that another process measures; -1 for anything else.
int runInspection(int nArgs, char **pszArgs); ///< "--inspect ours|peer PICTURES"
int runStartUp(int nArgs, char **pszArgs);    ///< "--start-up ours|peer"
} // namespace Bench

#endif
