# The libraries that read, draw and write images. Each is opened when it is first used: a program
# that draws nothing starts as if they did not exist, and a file of one format needs no more than
# the library of that format.

# add_image_library(NAME module function...): `module` is pkg-config's.
function(add_image_library name module)
    pkg_check_modules(${name} REQUIRED IMPORTED_TARGET ${module})
    list(GET ${name}_LINK_LIBRARIES 0 library)
    add_lazy_library(Ambrel NAME ${name} LIBRARY "${library}"
        INCLUDE_DIRECTORIES ${${name}_INCLUDE_DIRS} FUNCTIONS ${ARGN})
endfunction()

add_image_library(Cairo cairo
    cairo_close_path cairo_create cairo_curve_to cairo_destroy cairo_fill
    cairo_image_surface_create cairo_image_surface_get_data cairo_image_surface_get_stride
    cairo_line_to cairo_move_to cairo_scale cairo_set_antialias cairo_set_fill_rule
    cairo_set_line_join cairo_set_line_width cairo_set_tolerance cairo_status cairo_stroke
    cairo_surface_destroy cairo_surface_flush cairo_translate)
add_image_library(Fontconfig fontconfig
    FcCharSetAddChar FcCharSetCreate FcCharSetDestroy FcConfigDestroy FcConfigSubstitute
    FcDefaultSubstitute FcFontRenderPrepare FcFontSetDestroy FcFontSort
    FcInitLoadConfigAndFonts FcPatternAddBool FcPatternAddCharSet FcPatternAddInteger
    FcPatternAddString FcPatternCreate FcPatternDestroy FcPatternGetBool FcPatternGetInteger
    FcPatternGetString)
add_image_library(HarfBuzz harfbuzz
    hb_blob_create_from_file_or_fail hb_blob_destroy hb_buffer_add_utf16 hb_buffer_create
    hb_buffer_destroy hb_buffer_get_glyph_infos hb_buffer_get_glyph_positions
    hb_buffer_guess_segment_properties hb_buffer_set_direction hb_buffer_set_language
    hb_draw_funcs_create hb_draw_funcs_destroy hb_draw_funcs_set_close_path_func
    hb_draw_funcs_set_cubic_to_func hb_draw_funcs_set_line_to_func
    hb_draw_funcs_set_move_to_func hb_draw_funcs_set_quadratic_to_func hb_face_create
    hb_face_destroy hb_face_get_glyph_count hb_face_get_upem hb_font_create hb_font_destroy
    hb_font_get_face hb_font_get_glyph_shape hb_font_set_variations hb_language_from_string
    hb_shape hb_variation_from_string)
add_image_library(Png libpng
    png_image_begin_read_from_memory png_image_finish_read png_image_free)
add_image_library(Deflate libdeflate
    libdeflate_alloc_compressor libdeflate_crc32 libdeflate_free_compressor
    libdeflate_zlib_compress libdeflate_zlib_compress_bound)
add_image_library(OpenJpeg libopenjp2
    opj_create_decompress opj_decode opj_destroy_codec opj_end_decompress opj_image_destroy
    opj_read_header opj_set_default_decoder_parameters opj_setup_decoder
    opj_stream_default_create opj_stream_destroy opj_stream_set_read_function
    opj_stream_set_seek_function opj_stream_set_skip_function opj_stream_set_user_data
    opj_stream_set_user_data_length)
add_image_library(WebP libwebp
    WebPDecodeRGBAInto WebPGetFeaturesInternal)
add_image_library(WebPDemux libwebpdemux
    WebPAnimDecoderDelete WebPAnimDecoderGetInfo WebPAnimDecoderGetNext
    WebPAnimDecoderNewInternal)
add_image_library(Tiff libtiff-4
    TIFFClientOpenExt TIFFClose TIFFGetField TIFFOpenOptionsAlloc TIFFOpenOptionsFree
    TIFFOpenOptionsSetErrorHandlerExtR TIFFOpenOptionsSetMaxSingleMemAlloc
    TIFFOpenOptionsSetWarningHandlerExtR TIFFReadDirectory TIFFReadRGBAImageOriented)
add_image_library(GdkPixbuf gdk-pixbuf-2.0
    g_object_unref g_signal_connect_data gdk_pixbuf_apply_embedded_orientation
    gdk_pixbuf_format_is_scalable gdk_pixbuf_get_height gdk_pixbuf_get_n_channels
    gdk_pixbuf_get_rowstride gdk_pixbuf_get_width gdk_pixbuf_loader_close
    gdk_pixbuf_loader_get_format gdk_pixbuf_loader_get_pixbuf gdk_pixbuf_loader_new
    gdk_pixbuf_loader_set_size gdk_pixbuf_loader_write gdk_pixbuf_read_pixels)
