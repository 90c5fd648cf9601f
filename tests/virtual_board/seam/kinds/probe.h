/* Rows of the table that every kind of program has to fill in alike. Plain C: some of the kinds
   have nothing else. */
#ifndef PROBE_H
#define PROBE_H

#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif

/* Prints "name: result", or the errno's name when the result is negative. */
void row(const char* name, long result);
void row_text(const char* name, const char* text);

/* An address at which there is nothing; no compiler may know. */
extern void* volatile nowhere;

/* A new mailbox socket, bound to the board's address. */
int mailbox(int type);

void probe_sockets(void);
void probe_receiving(const char* self);
void probe_sending(void);
void probe_interfaces(void);
void probe_files(void);
int probe_inherited(const char* number);
int probe_sleeps(const char* seconds);

#endif
