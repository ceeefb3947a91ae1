#ifndef BENCH_GSTREAMER_H
#define BENCH_GSTREAMER_H

#include <cstddef>
#include <memory>

/// The peers that GStreamer gives; built where it was found (BENCH_GSTREAMER).
namespace Bench::Gst
{
/// appsrc ! queue ! appsink, with six pooled buffers that the pixels are copied into and out of.
class Queue
{
public:
    explicit Queue(size_t nBytes);
    ~Queue();
    Queue(const Queue &) = delete;
    Queue &operator=(const Queue &) = delete;

    void push(const unsigned char *puchPixels);
    void end();                           ///< nothing more is pushed
    bool pull(unsigned char *puchPixels); ///< false at the end

private:
    struct Elements;
    std::unique_ptr<Elements> m_pcElements;
    size_t m_nBytes;
};

/// A chain of identity elements, through which one thread pushes a buffer again and again.
class IdentityChain
{
public:
    explicit IdentityChain(int nElements);
    ~IdentityChain();
    IdentityChain(const IdentityChain &) = delete;
    IdentityChain &operator=(const IdentityChain &) = delete;

    void push();

private:
    struct Elements;
    std::unique_ptr<Elements> m_pcElements;
};
} // namespace Bench::Gst

#endif
