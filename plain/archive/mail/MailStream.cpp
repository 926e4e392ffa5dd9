#include "archive/mail/MailStream.h"

#include <algorithm>
#include <new>
#include <utility>

namespace tarn::archive::mail {
namespace {

struct MailStream {
  GMimeStream parent;
  SharedBytes* bytes;
  StreamReport* report;
  bool outOfMemory;
};

struct MailStreamClass {
  GMimeStreamClass parent;
};

// NOLINTNEXTLINE(readability-identifier-naming): the names that the macro asks for
// cppcheck-suppress unknownMacro ; of GLib, it makes functions
G_DEFINE_TYPE(MailStream, mail_stream, GMIME_TYPE_STREAM)

MailStream* Self(GMimeStream* stream) { return reinterpret_cast<MailStream*>(stream); }

uint64_t EndOf(GMimeStream* stream) {
  const uint64_t size = (*Self(stream)->bytes)->size();
  if (stream->bound_end < 0) return size;
  return std::min(size, static_cast<uint64_t>(stream->bound_end));
}

// No exception may pass GMime.
ssize_t Read(GMimeStream* stream, char* buffer, size_t length) {
  MailStream* self = Self(stream);
  const auto at = static_cast<uint64_t>(stream->position);
  const uint64_t end = EndOf(stream);
  if (at >= end) return 0;
  try {
    const size_t wanted = static_cast<size_t>(std::min<uint64_t>(length, end - at));
    Outcome<size_t> count = (*self->bytes)->readAt(at, std::span(buffer, wanted));
    if (!count) {
      if (self->report != nullptr) self->report->trouble = count.trouble();
      return -1;
    }
    if (self->report != nullptr) *count = self->report->watch.allow({buffer, *count});
    stream->position += static_cast<gint64>(*count);
    return static_cast<ssize_t>(*count);
  } catch (const std::bad_alloc&) {
    self->outOfMemory = true;
    return -1;
  }
}

ssize_t Write(GMimeStream*, const char*, size_t) { return -1; }

int Flush(GMimeStream*) { return 0; }

int Close(GMimeStream*) { return 0; }

gboolean Eos(GMimeStream* stream) {
  return static_cast<uint64_t>(stream->position) >= EndOf(stream) ? TRUE : FALSE;
}

int Reset(GMimeStream* stream) {
  stream->position = stream->bound_start;
  return 0;
}

gint64 Tell(GMimeStream* stream) { return stream->position; }

gint64 Length(GMimeStream* stream) {
  const auto end = static_cast<gint64>(EndOf(stream));
  return std::max<gint64>(0, end - stream->bound_start);
}

gint64 Seek(GMimeStream* stream, gint64 offset, GMimeSeekWhence whence) {
  gint64 wanted = offset;
  if (whence == GMIME_STREAM_SEEK_CUR) wanted += stream->position;
  if (whence == GMIME_STREAM_SEEK_END) wanted += static_cast<gint64>(EndOf(stream));
  if (wanted < stream->bound_start || wanted > static_cast<gint64>(EndOf(stream))) return -1;
  stream->position = wanted;
  return wanted;
}

MailStream* NewStream(SharedBytes bytes, gint64 start, gint64 end) {
  auto* stream = static_cast<MailStream*>(g_object_new(mail_stream_get_type(), nullptr));
  *stream->bytes = std::move(bytes);
  g_mime_stream_construct(&stream->parent, start, end);
  return stream;
}

GMimeStream* Substream(GMimeStream* stream, gint64 start, gint64 end) {
  return &NewStream(*Self(stream)->bytes, start, end)->parent;
}

void Finalize(GObject* object) {
  delete reinterpret_cast<MailStream*>(object)->bytes;
  G_OBJECT_CLASS(mail_stream_parent_class)->finalize(object);
}

void mail_stream_class_init(MailStreamClass* type) {
  reinterpret_cast<GObjectClass*>(type)->finalize = Finalize;
  GMimeStreamClass& stream = type->parent;
  stream.read = Read;
  stream.write = Write;
  stream.flush = Flush;
  stream.close = Close;
  stream.eos = Eos;
  stream.reset = Reset;
  stream.seek = Seek;
  stream.tell = Tell;
  stream.length = Length;
  stream.substream = Substream;
}

void mail_stream_init(MailStream* stream) {
  stream->bytes = new SharedBytes();
  stream->report = nullptr;
  stream->outOfMemory = false;
}

}  // namespace

GObjectPtr<GMimeStream> StreamFor(SharedBytes bytes, StreamReport* report) {
  MailStream* stream = NewStream(std::move(bytes), 0, -1);
  stream->report = report;
  return GObjectPtr<GMimeStream>(&stream->parent);
}

void EndReport(GMimeStream* stream) {
  Self(stream)->report = nullptr;
  if (std::exchange(Self(stream)->outOfMemory, false)) throw std::bad_alloc();
}

}  // namespace tarn::archive::mail
