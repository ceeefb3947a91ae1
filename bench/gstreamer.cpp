#include "gstreamer.h"

#include <stdexcept>
#include <vector>

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

namespace
{
void initialise()
{
    static const bool s_bReady = gst_init_check(nullptr, nullptr, nullptr) != FALSE;
    if (!s_bReady)
        throw std::runtime_error("GStreamer can't be initialised");
}

GstElement *make(const char *szFactory)
{
    GstElement *pcElement = gst_element_factory_make(szFactory, nullptr);
    if (!pcElement)
        throw std::runtime_error(std::string("GStreamer lacks the element ") + szFactory);
    return pcElement;
}
} // namespace

struct Bench::Gst::Queue::Elements {
    GstElement *m_pcPipeline = nullptr;
    GstElement *m_pcSource = nullptr;
    GstElement *m_pcSink = nullptr;
    GstBufferPool *m_pcPool = nullptr;
};

Bench::Gst::Queue::Queue(size_t nBytes) : m_pcElements(std::make_unique<Elements>()), m_nBytes(nBytes)
{
    initialise();
    Elements &c = *m_pcElements;
    c.m_pcPipeline = gst_pipeline_new(nullptr);
    c.m_pcSource = make("appsrc");
    GstElement *pcQueue = make("queue");
    c.m_pcSink = make("appsink");
    GstCaps *pcCaps = gst_caps_new_empty_simple("application/x-picture");
    // The pool's six buffers are the only bound, as ours are.
    g_object_set(c.m_pcSource, "caps", pcCaps, "max-bytes", guint64{0}, nullptr);
    g_object_set(pcQueue, "max-size-buffers", 0U, "max-size-bytes", 0U, "max-size-time", guint64{0}, nullptr);
    g_object_set(c.m_pcSink, "sync", FALSE, nullptr);
    gst_bin_add_many(GST_BIN(c.m_pcPipeline), c.m_pcSource, pcQueue, c.m_pcSink, nullptr);
    gst_element_link_many(c.m_pcSource, pcQueue, c.m_pcSink, nullptr);

    c.m_pcPool = gst_buffer_pool_new();
    GstStructure *pcConfig = gst_buffer_pool_get_config(c.m_pcPool);
    gst_buffer_pool_config_set_params(pcConfig, pcCaps, static_cast<guint>(nBytes), 6, 6);
    gst_buffer_pool_set_config(c.m_pcPool, pcConfig);
    gst_caps_unref(pcCaps);
    gst_buffer_pool_set_active(c.m_pcPool, TRUE);
    gst_element_set_state(c.m_pcPipeline, GST_STATE_PLAYING);
}

Bench::Gst::Queue::~Queue()
{
    gst_element_set_state(m_pcElements->m_pcPipeline, GST_STATE_NULL);
    gst_buffer_pool_set_active(m_pcElements->m_pcPool, FALSE);
    gst_object_unref(m_pcElements->m_pcPool);
    gst_object_unref(m_pcElements->m_pcPipeline);
}

void Bench::Gst::Queue::push(const unsigned char *puchPixels)
{
    GstBuffer *pcBuffer = nullptr;
    if (gst_buffer_pool_acquire_buffer(m_pcElements->m_pcPool, &pcBuffer, nullptr) != GST_FLOW_OK)
        throw std::runtime_error("GStreamer gives no buffer");
    gst_buffer_fill(pcBuffer, 0, puchPixels, m_nBytes);
    gst_app_src_push_buffer(GST_APP_SRC(m_pcElements->m_pcSource), pcBuffer);
}

void Bench::Gst::Queue::end()
{
    gst_app_src_end_of_stream(GST_APP_SRC(m_pcElements->m_pcSource));
}

bool Bench::Gst::Queue::pull(unsigned char *puchPixels)
{
    GstSample *pcSample = gst_app_sink_pull_sample(GST_APP_SINK(m_pcElements->m_pcSink));
    if (!pcSample)
        return false;
    gst_buffer_extract(gst_sample_get_buffer(pcSample), 0, puchPixels, m_nBytes);
    gst_sample_unref(pcSample);
    return true;
}

struct Bench::Gst::IdentityChain::Elements {
    std::vector<GstElement *> m_vIdentities;
    GstPad *m_pcSource = nullptr;
    GstPad *m_pcSink = nullptr;
    GstBuffer *m_pcBuffer = nullptr;
};

Bench::Gst::IdentityChain::IdentityChain(int nElements) : m_pcElements(std::make_unique<Elements>())
{
    initialise();
    Elements &c = *m_pcElements;
    c.m_pcSource = gst_pad_new("src", GST_PAD_SRC);
    c.m_pcSink = gst_pad_new("sink", GST_PAD_SINK);
    gst_pad_set_chain_function(c.m_pcSink, [](GstPad *, GstObject *, GstBuffer *pcBuffer) {
        gst_buffer_unref(pcBuffer);
        return GST_FLOW_OK;
    });
    gst_pad_set_active(c.m_pcSink, TRUE);
    gst_pad_set_active(c.m_pcSource, TRUE);
    GstPad *pcLast = static_cast<GstPad *>(gst_object_ref(c.m_pcSource));
    const auto fnLink = [&pcLast](GstPad *pcNext) {
        if (gst_pad_link(pcLast, pcNext) != GST_PAD_LINK_OK)
            throw std::runtime_error("GStreamer can't link the elements");
        gst_object_unref(pcLast);
    };
    for (int n = 0; n < nElements; ++n) {
        GstElement *pcIdentity = make("identity");
        gst_object_ref_sink(pcIdentity);
        GstPad *pcInput = gst_element_get_static_pad(pcIdentity, "sink");
        fnLink(pcInput);
        gst_object_unref(pcInput);
        pcLast = gst_element_get_static_pad(pcIdentity, "src");
        gst_element_set_state(pcIdentity, GST_STATE_PLAYING);
        c.m_vIdentities.push_back(pcIdentity);
    }
    fnLink(c.m_pcSink);
    gst_pad_push_event(c.m_pcSource, gst_event_new_stream_start("bench"));
    GstCaps *pcCaps = gst_caps_new_empty_simple("application/x-picture");
    gst_pad_push_event(c.m_pcSource, gst_event_new_caps(pcCaps));
    gst_caps_unref(pcCaps);
    GstSegment cSegment;
    gst_segment_init(&cSegment, GST_FORMAT_TIME);
    gst_pad_push_event(c.m_pcSource, gst_event_new_segment(&cSegment));
    c.m_pcBuffer = gst_buffer_new();
}

Bench::Gst::IdentityChain::~IdentityChain()
{
    gst_pad_set_active(m_pcElements->m_pcSource, FALSE);
    gst_pad_set_active(m_pcElements->m_pcSink, FALSE);
    for (GstElement *pcIdentity : m_pcElements->m_vIdentities) {
        gst_element_set_state(pcIdentity, GST_STATE_NULL);
        gst_object_unref(pcIdentity);
    }
    gst_object_unref(m_pcElements->m_pcSource);
    gst_object_unref(m_pcElements->m_pcSink);
    gst_buffer_unref(m_pcElements->m_pcBuffer);
}

void Bench::Gst::IdentityChain::push()
{
    gst_pad_push(m_pcElements->m_pcSource, gst_buffer_ref(m_pcElements->m_pcBuffer));
}
