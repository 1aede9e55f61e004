#pragma once

#include <gst/gst.h>

/// Which hardware decoder a bin stands for, and the software that does its work.
struct DecoderKind {
    const char* element;           ///< name that the bin is registered under
    const char* type;              ///< name of its class
    const char* description;       ///< for gst-inspect-1.0
    const char* sinkCaps;          ///< what the hardware takes
    const char* softwareNames[2];  ///< elements inside, the first that exists; the last may be null
};

/// Makes the class of a bin that decodes as @p kind says; @p kind must live as long as the process.
GType registerSoftwareDecoder(const DecoderKind& kind);
