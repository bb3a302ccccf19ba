#include "drivers/TQVisionDriver/camera_stream.h"

#include <algorithm>
#include <string>
#include <thread>
#include <utility>

#include "drivers/TQVisionDriver/network.h"
#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

// One is kept, one is with the host, the others are being filled.
constexpr int kBuffers = 5;
constexpr int kLargestPacket = 9000;
// Twice a small picture would be less than any socket has.
constexpr guint kSmallestSocketBuffer = 1U << 18U;
constexpr guint kLargestSocketBuffer = 1U << 30U;
// A new packet socket hears every camera until its filter is in place.
constexpr std::chrono::milliseconds kFilterPause{60};

// Within what the path carries. Aravis checks with a test packet when the stream is made, and settles for
// less if it does not arrive, unless the size was set by hand.
void choosePacketSize(ArvCamera* camera, const std::string& address, const DeviceSettings& settings) {
    int size = settings.packetSize;
    if (size > 0) {
        arv_camera_gv_set_packet_size_adjustment(camera, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    } else {
        size = std::min(pathMtu(address), kLargestPacket);
    }
    if (size <= 0) return;
    Error error;
    arv_camera_gv_set_packet_size(camera, size, error.receive());
    if (error.failed()) trace(address + ": packet size " + std::to_string(size) + ": " + error.text());
}

int socketBufferFor(guint payload) {
    const guint twice = payload > kLargestSocketBuffer / 2 ? kLargestSocketBuffer : 2 * payload;
    return static_cast<int>(std::max(twice, kSmallestSocketBuffer));
}

std::string addressOf(ArvCamera* camera) {
    auto* const device = ARV_GV_DEVICE(arv_camera_get_device(camera));
    const Ref<GSocketAddress> socket(
        G_SOCKET_ADDRESS(g_object_ref(arv_gv_device_get_device_address(device))));
    gchar* const text =
        g_inet_address_to_string(g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(socket.get())));
    std::string address(text);
    g_free(text);
    return address;
}

}  // namespace

std::shared_ptr<CameraStream> CameraStream::create(ArvCamera* camera, const DeviceSettings& settings,
                                                   std::shared_ptr<FrameCounters> counters) {
    std::shared_ptr<CameraStream> stream(new CameraStream(std::move(counters)));
    return stream->prepare(camera, settings) ? stream : nullptr;
}

bool CameraStream::prepare(ArvCamera* camera, const DeviceSettings& settings) {
    const bool isNetwork = arv_camera_is_gv_device(camera) != FALSE;
    const std::string address = isNetwork ? addressOf(camera) : "";
    const bool raw = settings.packetSocket && mayReadRawPackets();
    if (isNetwork) {
        choosePacketSize(camera, address, settings);
        arv_camera_gv_set_stream_options(
            camera, raw ? ARV_GV_STREAM_OPTION_NONE : ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    }
    Error error;
    const guint payload = arv_camera_get_payload(camera, error.receive());
    if (error.failed() || payload == 0) {
        trace("no picture size: " + error.text());
        return false;
    }
    context_ = g_main_context_new();
    owned_.reset(arv_camera_create_stream(camera, &CameraStream::onEvent, this, error.receive()));
    if (!owned_) {
        trace("no stream: " + error.text());
        return false;
    }
    if (isNetwork) {
        const int wanted = settings.socketBuffer > 0 ? settings.socketBuffer : socketBufferFor(payload);
        // Aravis would size the buffer when the first packet arrives, and lose the frame of that packet.
        g_object_set(owned_.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                     wanted, nullptr);
        const int granted = growReceiveBuffer(arv_gv_stream_get_port(ARV_GV_STREAM(owned_.get())), wanted);
        trace(address + ": packets of " +
              std::to_string(arv_camera_gv_get_packet_size(camera, error.receive())) +
              " bytes, receive buffer of " + std::to_string(granted) + " bytes (asked for " +
              std::to_string(wanted) + "), " + (raw ? "packet socket" : "plain socket"));
        if (raw) std::this_thread::sleep_for(kFilterPause);
    }
    counters_->beginStream();
    stream_ = owned_.get();
    for (int i = 0; i < kBuffers; ++i) arv_stream_push_buffer(owned_.get(), arv_buffer_new(payload, nullptr));
    return true;
}

CameraStream::~CameraStream() {
    stream_ = nullptr;
    // Ends the receiving thread.
    owned_.reset();
    if (context_ != nullptr) g_main_context_unref(context_);
}

void CameraStream::onEvent(void* self, ArvStreamCallbackType type, ArvBuffer* /*buffer*/) {
    auto* const stream = static_cast<CameraStream*>(self);
    try {
        switch (type) {
            // What GLib attaches on this thread must not land in the main loop of the host.
            case ARV_STREAM_CALLBACK_TYPE_INIT:
                g_main_context_push_thread_default(stream->context_);
                break;
            case ARV_STREAM_CALLBACK_TYPE_EXIT:
                g_main_context_pop_thread_default(stream->context_);
                break;
            case ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE:
                stream->drain();
                break;
            default:
                break;
        }
    } catch (...) {  // a frame is lost; the thread is Aravis' and goes on
    }
}

void CameraStream::drain() {
    ArvStream* const stream = stream_;
    if (stream == nullptr) return;
    while (ArvBuffer* const popped = arv_stream_try_pop_buffer(stream)) {
        Ref<ArvBuffer> buffer(popped);
        const ArvBufferStatus status = arv_buffer_get_status(popped);
        const std::uint64_t number = arv_buffer_get_frame_id(popped);
        if (status == ARV_BUFFER_STATUS_SUCCESS) {
            std::size_t size = 0;
            arv_buffer_get_data(popped, &size);
            keep(stream, std::move(buffer), counters_->complete(number, size));
        } else {
            // One that was cut off by the end of the stream is not lost.
            if (status != ARV_BUFFER_STATUS_ABORTED && status != ARV_BUFFER_STATUS_CLEARED) {
                counters_->incomplete(number);
            }
            arv_stream_push_buffer(stream, buffer.release());
        }
    }
}

void CameraStream::keep(ArvStream* stream, Ref<ArvBuffer> buffer, std::uint64_t number) {
    ReceivedFrame frame{std::move(buffer), Clock::now(), number};
    {
        const zul::LockGuard lock(mutex_);
        std::swap(frame, newest_);
    }
    arrived_.notify_all();
    if (frame.buffer) arv_stream_push_buffer(stream, frame.buffer.release());
}

std::uint64_t CameraStream::newestNumber() {
    const zul::LockGuard lock(mutex_);
    return newest_.buffer ? newest_.number : 0;
}

void CameraStream::waitForNewest(std::chrono::milliseconds wait) {
    const Clock::time_point end = Clock::now() + wait;
    while (!newest_.buffer && arrived_.wait_until(mutex_, end) == std::cv_status::no_timeout) {
    }
}

bool CameraStream::take(std::chrono::milliseconds wait, ReceivedFrame& frame) {
    const zul::LockGuard lock(mutex_);
    waitForNewest(wait);
    if (!newest_.buffer) return false;
    frame = std::move(newest_);
    return true;
}

void CameraStream::giveBack(Ref<ArvBuffer> buffer) {
    if (buffer) arv_stream_push_buffer(owned_.get(), buffer.release());
}

}  // namespace vision
