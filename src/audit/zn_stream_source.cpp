#include "zenutl/zn_stream_source.h"

ZnStreamSource::~ZnStreamSource() {}
