// What the leak checker of the sanitizers passes over: the sound server's library keeps its streams when the
// server dies under them, the Vorbis encoder forgets one residue table when it is set up for six channels,
// and the MIDI library forgets its buffers where it looks for a JACK server in vain.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libpulse\nleak:vorbis_encode_setup_init\nleak:jack_ringbuffer_create\n";
}
