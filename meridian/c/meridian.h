/**
 * \file
 * The whole C interface of Meridian: plain C11, also for C++ and Objective-C. For example:
 *
 *     #include <meridian/c/meridian.h>
 *
 *     MeridianError* error = NULL;
 *     MeridianArguments* arguments = meridian_arguments_create_from_main(argc, argv, true, &error);
 *     if (arguments == NULL) return fail(error);
 *     meridian_arguments_set_video_frame_rate(arguments, 25, NULL);
 *     meridian_arguments_destroy(arguments);
 *
 * text.h has the rules of ownership, texts and callbacks; error.h those of errors.
 */
#ifndef MERIDIAN_C_MERIDIAN_H
#define MERIDIAN_C_MERIDIAN_H

#include <meridian/c/analysis.h>
#include <meridian/c/arguments.h>
#include <meridian/c/constants.h>
#include <meridian/c/error.h>
#include <meridian/c/explanation.h>
#include <meridian/c/filter.h>
#include <meridian/c/log.h>
#include <meridian/c/lut.h>
#include <meridian/c/media.h>
#include <meridian/c/names.h>
#include <meridian/c/properties.h>
#include <meridian/c/text.h>

#endif
