/* A library that loads but is no plug-in: it exports neither orlLCMinit nor orlLCMterminate. */
__attribute__((visibility("default"))) int vesk_probe_nothing(void) {
    return 0;
}
