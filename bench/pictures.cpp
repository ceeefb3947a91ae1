#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "cases.h"

cv::Mat Bench::storeCopy(const cv::Mat &cPicture)
{
    const int nPixel = static_cast<int>(cPicture.elemSize());
    const int nRow = nPixel == 3 ? ((cPicture.cols + 1) * 3) & ~3 : cPicture.cols * nPixel;
    // A part of a picture whose rows are as long as the store's.
    const cv::Mat cBytes = cv::Mat::zeros(cPicture.rows, nRow, CV_8U);
    cv::Mat cCopy(cPicture.rows, cPicture.cols, cPicture.type(), cBytes.data, static_cast<size_t>(nRow));
    cCopy.u = cBytes.u; // shares the memory's owner
    cCopy.addref();
    cPicture.copyTo(cCopy);
    return cCopy;
}

cv::Mat Bench::photograph(int nWidth, int nHeight, bool bColour)
{
    const cv::Mat cFile = cv::imread(OCULINEX_SOURCE_DIR "/examples/pictures/coins.png",
                                     bColour ? cv::IMREAD_COLOR : cv::IMREAD_GRAYSCALE);
    cv::Mat cSized;
    cv::resize(cFile, cSized, {nWidth, nHeight}, 0, 0, cv::INTER_LINEAR);
    return storeCopy(cSized);
}
