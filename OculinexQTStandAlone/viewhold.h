#ifndef VIEWHOLD_H
#define VIEWHOLD_H

#include "globalfunction.h"

/// Holds a view's lock while it lives (private header). False when there is no such view.
class ViewHold
{
public:
    explicit ViewHold(int nView)
        : m_nView(nView), m_pcCanvas(GlobalFunction::getInstance()->requestViewDrawOption(nView))
    {
    }
    ~ViewHold() { GlobalFunction::getInstance()->releaseViewDrawOption(m_nView, m_pcCanvas); }
    ViewHold(const ViewHold &) = delete;
    ViewHold &operator=(const ViewHold &) = delete;

    explicit operator bool() const { return m_pcCanvas != nullptr; }
    GlobalFunction::ViewDrawOption *operator->() const { return m_pcCanvas; }

private:
    const int m_nView;
    GlobalFunction::ViewDrawOption *const m_pcCanvas;
};

#endif
