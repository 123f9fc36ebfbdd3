/**
 * \file
 * Meridian in Objective-C: the argument model of the transcoder, the constants that applications and the transcoder
 * share, and LUT files. For example:
 *
 *     TranscodeCliArguments* arguments = [[TranscodeCliArguments alloc] initWithCliArgs:words];
 *     arguments.videoFrameRate = [NSNumber numberWithFloat:25];
 *     task.arguments = arguments.commandLine;
 *
 * Read by GCC's Objective-C as well as by Clang's. What holds for all of it:
 *
 * - A nil where the header does not allow it, an object of another class and an impossible value are mistakes in
 *   the program: they raise NSInvalidArgumentException. What may fail by what a user or a file holds returns an NSError
 *   (see Errors.h). Lack of memory raises NSMallocException where there is no error to return.
 * - Texts are Unicode; a string that UTF-8 cannot carry (half a surrogate pair) raises NSInvalidArgumentException.
 */
#ifndef MERIDIAN_H
#define MERIDIAN_H

#import <Meridian/Constants.h>
#import <Meridian/Defines.h>
#import <Meridian/Errors.h>
#import <Meridian/FFmpegDescriptionConstants.h>
#import <Meridian/MediaFormatConstants.h>
#import <Meridian/ParsedLutFile.h>
#import <Meridian/TranscodeCliArguments.h>
#import <Meridian/TranscodeProperties.h>

#endif
