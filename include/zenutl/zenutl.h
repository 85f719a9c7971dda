// The whole public interface of zenutl in one include.
#ifndef ZENUTL_ZENUTL_H_
#define ZENUTL_ZENUTL_H_

#include "zenutl/audit_trail.h"
#include "zenutl/audit_trail_settings.h"
#include "zenutl/audit_trail_wrapper.h"
<<<<<<< HEAD
#include "zenutl/base64.h"
#include "zenutl/blowfish.h"
=======
#include "zenutl/carchive.h"
#include "zenutl/cexception.h"
#include "zenutl/cfile.h"
>>>>>>> datetime
#include "zenutl/configuration_section.h"
#include "zenutl/cstring.h"
#include "zenutl/cstring_format_target.h"
#include "zenutl/date_time_format.h"
#include "zenutl/dom_print_filter.h"
#include "zenutl/dom_serializer_format_target.h"
#include "zenutl/exception.h"
#include "zenutl/find_nearest_point.h"
#include "zenutl/fn_class.h"
#include "zenutl/host_dialogs.h"
#include "zenutl/html_utilities.h"
#include "zenutl/ini_file_section.h"
#include "zenutl/istream_input_source.h"
#include "zenutl/istream_input_stream.h"
#include "zenutl/language_string.h"
#include "zenutl/locales.h"
#include "zenutl/log.h"
#include "zenutl/log_user_comm.h"
<<<<<<< HEAD
#include "zenutl/md5.h"
#include "zenutl/mem_util.h"
=======
#include "zenutl/lumo_date_time.h"
#include "zenutl/lumo_duration.h"
>>>>>>> datetime
#include "zenutl/memory_xml_input_stream.h"
#include "zenutl/mute_user_comm.h"
#include "zenutl/near_unique_id.h"
#include "zenutl/path_functions.h"
#include "zenutl/platform_types.h"
#include "zenutl/regression.h"
#include "zenutl/resource_module.h"
#include "zenutl/rolling_checksum.h"
#include "zenutl/stream_byte_helpers.h"
#include "zenutl/stream_directory_reader.h"
#include "zenutl/stream_directory_writer.h"
#include "zenutl/stream_helper_directory.h"
#include "zenutl/stream_reader.h"
#include "zenutl/stream_reader_proxy.h"
#include "zenutl/stream_writer.h"
#include "zenutl/string_xml_input_stream.h"
#include "zenutl/system_info.h"
#include "zenutl/time_functions.h"
#include "zenutl/user_comm.h"
#include "zenutl/write_xml_file.h"
#include "zenutl/xml_input_source.h"
#include "zenutl/xml_input_source_stream.h"
#include "zenutl/xml_input_stream.h"
#include "zenutl/xml_section.h"
#include "zenutl/zentri_filter_validator.h"
#include "zenutl/zn_file.h"
#include "zenutl/zn_folder_stream_source.h"
<<<<<<< HEAD
#include "zenutl/zn_misc_util.h"
=======
#include "zenutl/zn_guid.h"
>>>>>>> datetime
#include "zenutl/zn_std_string.h"
#include "zenutl/zn_stream_source.h"
#include "zenutl/zn_string.h"
#include "zenutl/zn_string_algorithms.h"

#endif  // ZENUTL_ZENUTL_H_
