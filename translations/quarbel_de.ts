<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>QObject</name>
    <message>
        <location filename="../src/ui/views/summary_panel.cpp" line="+48"/>
        <source>Skipped</source>
        <translation>Übersprungen</translation>
    </message>
    <message>
        <location line="-1"/>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Skipped / failed</source>
        <translation>Übersprungen / Fehler</translation>
    </message>
</context>
<context>
    <name>Speech</name>
    <message>
        <location filename="../src/ui/views/accessibility.cpp" line="+42"/>
        <source>Global score</source>
        <translation>Gesamtwertung</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Result of %1</source>
        <translation>Ergebnis von %1</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Run controls</source>
        <translation>Laufsteuerung</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Log</source>
        <translation>Protokoll</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Run summary</source>
        <translation>Laufübersicht</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Score trend</source>
        <translation>Wertungsverlauf</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Comparison of two runs</source>
        <translation>Vergleich zweier Läufe</translation>
    </message>
    <message>
        <location filename="../src/ui/views/accessible_stage.cpp" line="+30"/>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <location line="+39"/>
        <source>Live stage</source>
        <translation>Live-Anzeige</translation>
    </message>
    <message>
        <location filename="../src/ui/views/accessible_text.cpp" line="+29"/>
        <source>%1 Quarbel points</source>
        <translation>%1 Quarbel-Punkte</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>%1 (95 % interval of %2 passes)</source>
        <translation>%1 (95-%-Intervall aus %2 Durchgängen)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 (95 % interval)</source>
        <translation>%1 (95-%-Intervall)</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Not run</source>
        <translation>Nicht gelaufen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Running</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Done, %1 points</source>
        <translation>Fertig, %1 Punkte</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+14"/>
        <source>Skipped</source>
        <translation>Übersprungen</translation>
    </message>
    <message>
        <location line="-13"/>
        <location line="+13"/>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <location line="-5"/>
        <source>Running now</source>
        <translation>Läuft gerade</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Not run yet</source>
        <translation>Noch nicht gelaufen</translation>
    </message>
    <message>
        <location line="+6"/>
        <location line="+50"/>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <location line="-44"/>
        <source>Noisy machine.</source>
        <translation>Unruhiges System.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1: %2.</source>
        <translation>%1: %2.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Duration: %1 s.</source>
        <translation>Dauer: %1 s.</translation>
    </message>
    <message>
        <location line="+9"/>
        <location line="+7"/>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Cooling down before %1</source>
        <translation>Abkühlen vor %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Running %1, %2</source>
        <translation>%1 läuft, %2</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Preparing</source>
        <translation>Vorbereitung</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>Reading system facts</source>
        <translation>Systemdaten werden gelesen</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>CPU %1</source>
        <translation>CPU %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>GPU %1</source>
        <translation>GPU %1</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>%1, %2 of %3 complete</source>
        <translation>%1, %2 von %3 fertig</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>%1. Total score %2</source>
        <translation>%1. Gesamtwertung %2</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 of %2 completed</source>
        <translation>%1 von %2 fertig</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 skipped, %2 failed</source>
        <translation>%1 übersprungen, %2 fehlgeschlagen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>elapsed %1</source>
        <translation>Dauer %1</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>peak CPU %1</source>
        <translation>CPU-Spitze %1</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>peak GPU %1</source>
        <translation>GPU-Spitze %1</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>%1: one run, %2 points</source>
        <translation>%1: ein Lauf, %2 Punkte</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1: %2 runs, from %3 to %4 points</source>
        <translation>%1: %2 Läufe, von %3 bis %4 Punkte</translation>
    </message>
    <message>
        <location line="+12"/>
        <source>%1: %2 then %3, %4 %5, %6</source>
        <translation>%1: %2, dann %3, %4 %5, %6</translation>
    </message>
</context>
<context>
    <name>quarbel</name>
    <message>
        <location filename="../src/model/catalogue.cpp" line="+18"/>
        <source>CPU</source>
        <translation>CPU</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Render</source>
        <translation>Rendering</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>GPU</source>
        <translation>GPU</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>SSD</source>
        <translation>SSD</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>RAW</source>
        <translation>RAW</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>System</source>
        <translation>System</translation>
    </message>
    <message>
        <location line="+17"/>
        <source>CPU Single-Core</source>
        <translation>CPU Single-Core</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>professional mixed workload on 1 core</source>
        <translation>professionelle Mischlast, 1 Kern</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Running a timed single-thread production mix: text/binary transforms, compression-like hashing, image math, simulation, and vector math.</source>
        <translation>Führt eine zeitlich begrenzte Produktionsmischung auf einem Thread aus: Text- und Binärumwandlungen, kompressionsähnliches Hashing, Bildberechnung, Simulation und Vektorrechnung.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Pinning the workload to one logical core.</source>
        <translation>Die Last wird an einen logischen Kern gebunden.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Running text, binary, image, simulation, and SIMD kernels.</source>
        <translation>Text-, Binär-, Bild-, Simulations- und SIMD-Kernel laufen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Collecting single-core throughput and checksum validation.</source>
        <translation>Einkern-Durchsatz und Prüfsummen werden erfasst.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>CPU Multi-Core</source>
        <translation>CPU Multi-Core</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>professional mixed workload multicore</source>
        <translation>professionelle Mischlast, alle Kerne</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Running the same production mix across all logical cores to measure sustained multicore throughput and scaling.</source>
        <translation>Führt dieselbe Produktionsmischung auf allen logischen Kernen aus, um Mehrkern-Durchsatz und Skalierung unter Dauerlast zu messen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Scheduling the production mix across available logical cores.</source>
        <translation>Die Produktionsmischung wird auf die verfügbaren logischen Kerne verteilt.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Measuring sustained multicore throughput under load.</source>
        <translation>Der Mehrkern-Durchsatz unter Dauerlast wird gemessen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Checking scaling, work units, and final validation markers.</source>
        <translation>Skalierung, Arbeitseinheiten und abschließende Prüfmarken werden kontrolliert.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>CPU Workflow</source>
        <translation>CPU Workflow</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>text, compression, and crypto</source>
        <translation>Text, Kompression und Krypto</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Processing mutable 256 KB data blocks with text/binary changes and SHA-256 hashing to measure developer-style throughput.</source>
        <translation>Verarbeitet veränderliche 256-KB-Datenblöcke mit Text- und Binäränderungen und SHA-256-Hashing, um den Durchsatz typischer Entwicklerarbeit zu messen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Mutating 256 KB data blocks for developer-style work.</source>
        <translation>256-KB-Datenblöcke werden wie bei Entwicklerarbeit verändert.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Hashing and validating sustained processing throughput.</source>
        <translation>Hashing und Prüfung unter Dauerlast laufen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Aggregating workflow bandwidth across active threads.</source>
        <translation>Die Workflow-Bandbreite aller aktiven Threads wird zusammengezählt.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Memory Stream</source>
        <translation>Memory Stream</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>copy, scale, and add bandwidth</source>
        <translation>Bandbreite: Copy, Scale, Add</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Streaming through large arrays with copy, scale, and add operations to measure sustained memory bandwidth.</source>
        <translation>Durchläuft große Arrays mit Kopier-, Skalier- und Additionsoperationen, um die Speicherbandbreite unter Dauerlast zu messen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Streaming through large arrays with copy, scale, and add operations.</source>
        <translation>Große Arrays werden mit Kopier-, Skalier- und Additionsoperationen durchlaufen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Measuring sustained memory bandwidth from the active working set.</source>
        <translation>Die Speicherbandbreite des aktiven Working Sets wird gemessen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Tracking completed passes and total bytes moved.</source>
        <translation>Abgeschlossene Durchgänge und insgesamt bewegte Bytes werden gezählt.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>CPU Tile Render</source>
        <translation>CPU Tile Render</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>sustained tile renderer</source>
        <translation>Kachel-Renderer unter Dauerlast</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Rendering procedural tiles on the CPU with ray-style lighting, samples, and checksums to measure sustained render throughput.</source>
        <translation>Rendert prozedurale Kacheln auf der CPU mit strahlenartiger Beleuchtung, Samples und Prüfsummen, um den Render-Durchsatz unter Dauerlast zu messen.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>GPU Visual Tour</source>
        <translation>GPU Visual Tour</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>timed Metal fly-through</source>
        <translation>zeitgesteuerter Metal-Durchflug</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Rendering a timed Metal fly-through with animated camera motion, sky, terrain, arches, lighting, and extra per-frame workload.</source>
        <translation>Rendert einen zeitgesteuerten Metal-Durchflug mit animierter Kamerafahrt, Himmel, Gelände, Bögen, Beleuchtung und zusätzlicher Last pro Frame.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Metal Compute</source>
        <translation>Metal Compute</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Metal compute kernel</source>
        <translation>Metal-Compute-Kernel</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Dispatching a sustained Metal compute kernel over large float4 buffers to measure GPU compute throughput.</source>
        <translation>Startet einen Metal-Compute-Kernel unter Dauerlast über große float4-Puffer, um den GPU-Rechendurchsatz zu messen.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>OpenCL Compute</source>
        <translation>OpenCL Compute</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenCL compute kernel</source>
        <translation>OpenCL-Compute-Kernel</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Dispatching a sustained OpenCL compute kernel for legacy compute coverage when an OpenCL device is available.</source>
        <translation>Startet einen OpenCL-Compute-Kernel unter Dauerlast, um ältere Compute-Pfade abzudecken, wenn ein OpenCL-Gerät verfügbar ist.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>RAW CPU Decode</source>
        <translation>RAW CPU Decode</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>synthetic 4K RAW decode on CPU</source>
        <translation>synthetische 4K-RAW-Dekodierung</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Decoding synthetic Bayer RAW frames on the CPU with demosaic, color transform, gamma, and checksum validation.</source>
        <translation>Dekodiert synthetische Bayer-RAW-Frames auf der CPU mit Demosaicing, Farbtransformation, Gamma und Prüfsummenkontrolle.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>RAW Metal Decode</source>
        <translation>RAW Metal Decode</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>synthetic 8K RAW decode on Metal</source>
        <translation>synthetische 8K-RAW-Dekodierung</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Decoding synthetic 8K Bayer RAW frames on Metal with a GPU demosaic and color transform pipeline.</source>
        <translation>Dekodiert synthetische 8K-Bayer-RAW-Frames auf Metal mit einer GPU-Pipeline für Demosaicing und Farbtransformation.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>SSD Sequential</source>
        <translation>SSD Sequential</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>large block file read/write</source>
        <translation>große Blöcke lesen/schreiben</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Writing and reading a temporary media-sized file in large blocks to measure sustained sequential file throughput.</source>
        <translation>Schreibt und liest eine temporäre Datei in Mediengröße in großen Blöcken, um den sequenziellen Dateidurchsatz unter Dauerlast zu messen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Writing a temporary media-sized file in large blocks.</source>
        <translation>Eine temporäre Datei in Mediengröße wird in großen Blöcken geschrieben.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Reading the same file back to measure sustained sequential speed.</source>
        <translation>Dieselbe Datei wird zurückgelesen, um die sequenzielle Dauergeschwindigkeit zu messen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Preparing read and write throughput in MB/s or GB/s.</source>
        <translation>Lese- und Schreibdurchsatz in MB/s oder GB/s werden aufbereitet.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>SSD Real Speed</source>
        <translation>SSD Real Speed</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>uncached volume throughput</source>
        <translation>ungepufferter Volume-Durchsatz</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Writing and reading a large temporary file with low-level uncached sequential I/O to measure real volume throughput in MB/s or GB/s.</source>
        <translation>Schreibt und liest eine große temporäre Datei mit ungepufferter sequenzieller Low-Level-E/A, um den realen Volume-Durchsatz in MB/s oder GB/s zu messen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Creating a large temporary file for uncached volume testing.</source>
        <translation>Eine große temporäre Datei für den ungepufferten Volume-Test wird angelegt.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Measuring low-level sequential write throughput.</source>
        <translation>Der sequenzielle Low-Level-Schreibdurchsatz wird gemessen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Reading back the file to estimate real volume speed.</source>
        <translation>Die Datei wird zurückgelesen, um die reale Volume-Geschwindigkeit abzuschätzen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>SSD Random</source>
        <translation>SSD Random</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>random 4K IO</source>
        <translation>zufällige 4K-E/A</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Running repeated random 4K reads and writes inside a temporary file to measure small-block storage responsiveness.</source>
        <translation>Führt wiederholt zufällige 4K-Lese- und Schreibzugriffe in einer temporären Datei aus, um die Reaktionszeit des Speichers bei kleinen Blöcken zu messen.</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Preparing the temporary file used for 4K random access.</source>
        <translation>Die temporäre Datei für zufällige 4K-Zugriffe wird vorbereitet.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Running repeated random reads and writes across the file.</source>
        <translation>Wiederholte zufällige Lese- und Schreibzugriffe laufen über die Datei.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Calculating read and write IOPS from measured operation time.</source>
        <translation>Lese- und Schreib-IOPS werden aus der gemessenen Zugriffszeit berechnet.</translation>
    </message>
</context>
<context>
    <name>quarbel::app::BenchmarkAnimationWindowController</name>
    <message>
        <location filename="../src/app/animation_window_controller.cpp" line="+16"/>
        <source>Quarbel - %1</source>
        <translation>Quarbel - %1</translation>
    </message>
</context>
<context>
    <name>quarbel::app::DevicesDialog</name>
    <message>
        <location filename="../src/app/devices_dialog.cpp" line="+53"/>
        <source>Automatic (%1)</source>
        <translation>Automatisch (%1)</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>none</source>
        <translation>keines</translation>
    </message>
    <message>
        <location line="+38"/>
        <source>Devices</source>
        <translation>Geräte</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>No Vulkan device</source>
        <translation>Kein Vulkan-Gerät</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>GPU (Vulkan)</source>
        <translation>GPU (Vulkan)</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>No OpenCL device</source>
        <translation>Kein OpenCL-Gerät</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>OpenCL device</source>
        <translation>OpenCL-Gerät</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>System temporary folder (%1)</source>
        <translation>Temporärer Ordner des Systems (%1)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Choose…</source>
        <translation>Wählen…</translation>
    </message>
    <message>
        <location line="+3"/>
        <location line="+6"/>
        <source>Storage folder</source>
        <translation>SSD-Testordner</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>The GPU benchmarks, OpenCL Compute and the storage benchmarks use these from the next run on. Every report names the devices it ran on.</source>
        <translation>Die GPU-Benchmarks, OpenCL Compute und die SSD-Benchmarks verwenden diese ab dem nächsten Lauf. Jeder Bericht nennt die Geräte, auf denen er lief.</translation>
    </message>
    <message>
        <location line="+37"/>
        <source>%1 on %2, %3 free</source>
        <translation>%1 auf %2, %3 frei</translation>
    </message>
</context>
<context>
    <name>quarbel::app::HistoryView</name>
    <message>
        <location filename="../src/app/history_run_text.cpp" line="+45"/>
        <source>Stopped before its end</source>
        <translation>Vor dem Ende gestoppt</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Skipped</source>
        <translation>Übersprungen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 pts</source>
        <translation>%1 Pkt.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>quick</source>
        <translation>schnell</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Accuracy Mode</source>
        <translation>Genauigkeitsmodus</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Full suite</source>
        <translation>Komplette Suite</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>No benchmark finished</source>
        <translation>Kein Benchmark beendet</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>%1 and %2 more</source>
        <translation>%1 und %2 weitere</translation>
    </message>
    <message>
        <location filename="../src/app/history_tables.cpp" line="+89"/>
        <source>The two runs have no benchmark in common.</source>
        <translation>Die beiden Läufe haben keinen Benchmark gemeinsam.</translation>
    </message>
    <message>
        <location filename="../src/app/history_window.cpp" line="+47"/>
        <source>Comparison</source>
        <translation>Vergleich</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Results</source>
        <translation>Ergebnisse</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Trend</source>
        <translation>Trend</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Save Result Cards…</source>
        <translation>Ergebniskarten speichern…</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Save JSON Report…</source>
        <translation>JSON-Bericht speichern…</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Quarbel - Run History</source>
        <translation>Quarbel - Laufverlauf</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Run History</source>
        <translation>Laufverlauf</translation>
    </message>
    <message>
        <location line="+27"/>
        <source>Compare the selected run with an earlier one</source>
        <translation>Den gewählten Lauf mit einem früheren vergleichen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Open the selected run&apos;s results (read only)</source>
        <translation>Die Ergebnisse des gewählten Laufs öffnen (nur lesen)</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Each benchmark of the selected run over the history&apos;s runs of the same length</source>
        <translation>Jeder Benchmark des gewählten Laufs über die Läufe gleicher Länge im Verlauf</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Save the global card and a card per benchmark of the selected run as PNG files</source>
        <translation>Die Gesamtkarte und je eine Karte pro Benchmark des gewählten Laufs als PNG-Dateien speichern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Save the selected run&apos;s JSON report</source>
        <translation>Den JSON-Bericht des gewählten Laufs speichern</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Compared with</source>
        <translation>Verglichen mit</translation>
    </message>
    <message>
        <location line="+95"/>
        <source>Reference: %1 · %2%3%4</source>
        <translation>Referenz: %1 · %2%3%4</translation>
    </message>
    <message>
        <location line="+3"/>
        <source> · Quarbel %1</source>
        <translation> · Quarbel %1</translation>
    </message>
    <message>
        <location line="+26"/>
        <location line="+39"/>
        <location line="+25"/>
        <source>Run a benchmark to start the history.</source>
        <translation>Einen Benchmark ausführen, um den Verlauf zu beginnen.</translation>
    </message>
    <message>
        <location line="-53"/>
        <source>%1 cannot be opened: %2</source>
        <translation>%1 lässt sich nicht öffnen: %2</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>No run selected</source>
        <translation>Kein Lauf ausgewählt</translation>
    </message>
    <message>
        <location line="+32"/>
        <source>This is the only run kept so far. Run the same benchmarks again to see what changed.</source>
        <translation>Dies ist bisher der einzige gespeicherte Lauf. Dieselben Benchmarks erneut ausführen, um Änderungen zu sehen.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No earlier complete run has a benchmark in common with this run, so there is nothing to compare it with. Run the same benchmarks again, or choose a run above.</source>
        <translation>Kein früherer vollständiger Lauf hat einen Benchmark mit diesem gemeinsam, daher gibt es nichts zu vergleichen. Dieselben Benchmarks erneut ausführen oder oben einen Lauf wählen.</translation>
    </message>
    <message>
        <location line="+24"/>
        <source>Quick runs of the history, oldest on the left; the selected run is ringed.</source>
        <translation>Schnelle Läufe des Verlaufs, der älteste links; der gewählte Lauf ist umkreist.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Full runs of the history, oldest on the left; the selected run is ringed.</source>
        <translation>Volle Läufe des Verlaufs, der älteste links; der gewählte Lauf ist umkreist.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>A trend needs the same benchmarks in two runs of the same length. Run them again.</source>
        <translation>Ein Trend braucht dieselben Benchmarks in zwei Läufen gleicher Länge. Bitte erneut ausführen.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>No runs kept yet. Every run you make is kept in %1.</source>
        <translation>Noch keine Läufe gespeichert. Jeder Lauf wird in %1 gespeichert.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>1 run kept in %1.</source>
        <translation>1 Lauf in %1 gespeichert.</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>%1 runs kept in %2.</source>
        <translation>%1 Läufe in %2 gespeichert.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Select one to compare it with an earlier run or to open its results.</source>
        <translation>Einen auswählen, um ihn mit einem früheren Lauf zu vergleichen oder seine Ergebnisse zu öffnen.</translation>
    </message>
    <message>
        <location filename="../src/app/history_saving.cpp" line="+46"/>
        <source>Could not save the result cards</source>
        <translation>Die Ergebniskarten konnten nicht gespeichert werden</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>%1 is not a folder.</source>
        <translation>%1 ist kein Ordner.</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Saved 1 result card in %1.</source>
        <translation>1 Ergebniskarte in %1 gespeichert.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Saved %1 result cards in %2.</source>
        <translation>%1 Ergebniskarten in %2 gespeichert.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Could not save the report</source>
        <translation>Der Bericht konnte nicht gespeichert werden</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>%1 is not a regular file.</source>
        <translation>%1 ist keine reguläre Datei.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>A complete copy is kept at %1.</source>
        <translation>Eine vollständige Kopie liegt unter %1.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Saved the report as %1.</source>
        <translation>Bericht als %1 gespeichert.</translation>
    </message>
    <message>
        <location line="+18"/>
        <source>Save Result Cards</source>
        <translation>Ergebniskarten speichern</translation>
    </message>
    <message>
        <location line="+11"/>
        <source>Save JSON Report</source>
        <translation>JSON-Bericht speichern</translation>
    </message>
</context>
<context>
    <name>quarbel::app::OtherRunsQuestion</name>
    <message>
        <location filename="../src/app/other_runs_question.cpp" line="+14"/>
        <source>Another Quarbel run is going on (%1).</source>
        <translation>Ein anderer Quarbel-Lauf ist im Gange (%1).</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Both runs would share the cores, the memory and the disk, and the results of both would be skewed. Wait for it to end, and this run starts then; Stop gives up waiting.</source>
        <translation>Beide Läufe würden sich Kerne, Arbeitsspeicher und Datenträger teilen, und die Ergebnisse beider wären verfälscht. Warten Sie sein Ende ab, dann startet dieser Lauf; Stopp beendet das Warten.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Wait for It</source>
        <translation>Abwarten</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Run Anyway</source>
        <translation>Trotzdem ausführen</translation>
    </message>
</context>
<context>
    <name>quarbel::app::QuarbelAboutView</name>
    <message>
        <location filename="../src/app/about_window.cpp" line="+21"/>
        <source>About Quarbel</source>
        <translation>Über Quarbel</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Sustained CPU, memory, storage, RAW and GPU benchmarks, scored in Quarbel points.</source>
        <translation>Dauerlast-Benchmarks für CPU, Arbeitsspeicher, Datenträger, RAW und GPU, bewertet in Quarbel-Punkten.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Everything stays on this machine.</source>
        <translation>Alles bleibt auf diesem Rechner.</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Interface font: Inter, copyright 2016-2022 The Inter Project Authors, under the SIL Open Font License 1.1.</source>
        <translation>Schrift der Oberfläche: Inter, Copyright 2016-2022 The Inter Project Authors, unter der SIL Open Font License 1.1.</translation>
    </message>
</context>
<context>
    <name>quarbel::app::QuarbelCommands</name>
    <message>
        <location filename="../src/app/commands.cpp" line="+15"/>
        <source>&amp;Quarbel</source>
        <translation>&amp;Quarbel</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>About Quarbel</source>
        <translation>Über Quarbel</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Quit Quarbel</source>
        <translation>Quarbel beenden</translation>
    </message>
    <message>
        <location line="+7"/>
        <source>&amp;Run</source>
        <translation>&amp;Ausführen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Run Selected</source>
        <translation>Auswahl ausführen</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Run All</source>
        <translation>Alle ausführen</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Accuracy Mode</source>
        <translation>Genauigkeitsmodus</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Run History</source>
        <translation>Laufverlauf</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Devices…</source>
        <translation>Geräte…</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Quarbel Help</source>
        <translation>Quarbel-Hilfe</translation>
    </message>
</context>
<context>
    <name>quarbel::app::QuarbelHelpView</name>
    <message>
        <location filename="../src/app/help_window.cpp" line="+13"/>
        <source>What Quarbel Does</source>
        <translation>Was Quarbel macht</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Quarbel measures sustained performance across CPU, memory, storage, RAW processing, GPU compute, and a real-time GPU scene drawn with Vulkan. Results are Quarbel scores and throughput measurements intended for comparing the same machine across changes or comparing machines under similar conditions.</source>
        <translation>Quarbel misst die Dauerleistung von CPU, Arbeitsspeicher, Datenträger, RAW-Verarbeitung, GPU-Rechenleistung und einer mit Vulkan gezeichneten Echtzeit-GPU-Szene. Die Ergebnisse sind Quarbel-Wertungen und Durchsatzmessungen, gedacht zum Vergleich desselben Rechners vor und nach Änderungen oder verschiedener Rechner unter ähnlichen Bedingungen.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Running Tests</source>
        <translation>Tests ausführen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Select a benchmark in the sidebar and press Run to test only that item. Press All to run the complete suite. The selected test remains selected when running a single item. Press Stop to cancel the active run.</source>
        <translation>Einen Benchmark in der Seitenleiste wählen und Ausführen drücken, um nur diesen zu testen. Alle startet die komplette Suite. Ein einzeln ausgeführter Test bleibt ausgewählt. Stopp bricht den aktiven Lauf ab.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Accuracy Mode</source>
        <translation>Genauigkeitsmodus</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Accuracy Mode is optional. When enabled before starting a run, Quarbel executes each selected benchmark three times and reports the median result with pass scores and spread in the result details. It takes longer, but it is better for careful comparisons between machines or hardware changes.</source>
        <translation>Der Genauigkeitsmodus ist optional. Ist er vor dem Start eines Laufs eingeschaltet, führt Quarbel jeden gewählten Benchmark dreimal aus und meldet den Median, mit den Wertungen der Durchgänge und ihrer Streuung in den Ergebnisdetails. Das dauert länger, eignet sich aber besser für sorgfältige Vergleiche zwischen Rechnern oder nach Hardwareänderungen.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Live Status</source>
        <translation>Live-Status</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>While a test is running, the main window shows the active workload, elapsed time, target duration, progress, and live metrics when available. CPU, memory, and SSD tests show an inline technical stage with a growing progress bar and real-time test text. Render, GPU, and RAW tests use separate visual benchmark windows; GPU Visual Tour is the measured Vulkan scene, rendered at 960 x 540 pixels whatever the display&apos;s scale.</source>
        <translation>Während ein Test läuft, zeigt das Hauptfenster die aktive Last, die verstrichene Zeit, die Zieldauer, den Fortschritt und, wo verfügbar, Live-Messwerte. CPU-, Speicher- und SSD-Tests zeigen eine eingebettete technische Anzeige mit wachsendem Fortschrittsbalken und Echtzeit-Testtext. Render-, GPU- und RAW-Tests nutzen eigene visuelle Benchmark-Fenster; GPU Visual Tour ist die gemessene Vulkan-Szene, gerendert in 960 x 540 Pixeln, unabhängig von der Skalierung der Anzeige.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Temperature Readouts</source>
        <translation>Temperaturanzeigen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>CPU and GPU temperatures are read from the kernel&apos;s hardware monitors (/sys/class/hwmon: k10temp or coretemp for the processor, amdgpu, nouveau or the GPU driver&apos;s own for graphics) and from its thermal zones. Where the machine exposes none, as most virtual machines do, Quarbel shows them as unavailable instead of using estimates or external helpers.</source>
        <translation>CPU- und GPU-Temperaturen stammen aus den Hardwaremonitoren des Kernels (/sys/class/hwmon: k10temp oder coretemp für den Prozessor, amdgpu, nouveau oder der eigene des GPU-Treibers für die Grafik) und aus seinen Thermalzonen. Stellt der Rechner keine bereit, wie die meisten virtuellen Maschinen, zeigt Quarbel sie als nicht verfügbar an, statt Schätzungen oder externe Hilfsprogramme zu verwenden.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Storage Results</source>
        <translation>Speicherergebnisse</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Sequential SSD results show large-block file Read and Write throughput in MB/s or GB/s. Real Speed uses low-level uncached sequential I/O for volume throughput. Random storage results show 4K read and write IOPS. Temporary files are created only for the duration of each test and are removed afterward.</source>
        <translation>Sequenzielle SSD-Ergebnisse zeigen den Lese- und Schreibdurchsatz großer Dateiblöcke in MB/s oder GB/s. Real Speed misst den Volume-Durchsatz mit ungepufferter sequenzieller Low-Level-E/A. Zufällige Speicherergebnisse zeigen 4K-Lese- und Schreib-IOPS. Temporäre Dateien existieren nur für die Dauer des jeweiligen Tests und werden danach entfernt.</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Final Summary</source>
        <translation>Abschließende Übersicht</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>When a selected test or full suite finishes, Quarbel shows a compact summary with total score, completed tests, elapsed time, and peak CPU/GPU temperatures recorded during the run.</source>
        <translation>Ist ein gewählter Test oder die komplette Suite fertig, zeigt Quarbel eine kompakte Übersicht mit Gesamtwertung, abgeschlossenen Tests, Dauer und den während des Laufs gemessenen CPU-/GPU-Spitzentemperaturen.</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Result Cards</source>
        <translation>Ergebniskarten</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>After a benchmark finishes, use Save Result Card to export a detailed PNG for that test. After a run summary appears, Save Result Card exports a global PNG with the total score, processor, graphics, memory, operating system, every benchmark result, status, main measurements, duration, and temperature readouts when available.</source>
        <translation>Ist ein Benchmark fertig, exportiert „Ergebniskarte speichern“ ein detailliertes PNG für diesen Test. Sobald eine Laufübersicht erscheint, exportiert „Ergebniskarte speichern“ ein Gesamt-PNG mit Gesamtwertung, Prozessor, Grafik, Arbeitsspeicher, Betriebssystem, jedem Benchmark-Ergebnis, Status, Hauptmesswerten, Dauer und, wo verfügbar, Temperaturwerten.</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Privacy and Safety</source>
        <translation>Datenschutz und Sicherheit</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Quarbel does not collect analytics, send benchmark results, install background services, add login items, modify system settings, or require command-line tools at runtime. The only network-related actions are user-triggered Donate and Email Donation Link commands, which open the system browser or mail app.</source>
        <translation>Quarbel sammelt keine Nutzungsdaten, sendet keine Benchmark-Ergebnisse, installiert keine Hintergrunddienste, fügt keine Anmeldeobjekte hinzu, ändert keine Systemeinstellungen und braucht zur Laufzeit keine Kommandozeilenwerkzeuge. Die einzigen netzwerkbezogenen Aktionen sind die vom Benutzer ausgelösten Befehle „Spenden“ und „Spendenlink per E-Mail“, die den Browser oder das Mailprogramm des Systems öffnen.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Use Quarbel &gt; Quit Quarbel or Ctrl+Q to quit. Active benchmark windows are closed and the app does not intentionally remain running in the background.</source>
        <translation>Quarbel &gt; Quarbel beenden oder Strg+Q beendet das Programm. Aktive Benchmark-Fenster werden geschlossen, und Quarbel läuft nicht absichtlich im Hintergrund weiter.</translation>
    </message>
    <message>
        <location line="+19"/>
        <location line="+9"/>
        <source>Quarbel Help</source>
        <translation>Quarbel-Hilfe</translation>
    </message>
</context>
<context>
    <name>quarbel::app::SummaryActions</name>
    <message>
        <location filename="../src/app/summary_actions.cpp" line="+52"/>
        <source>This run is not in the run history, so there is nothing to compare or share</source>
        <translation>Dieser Lauf ist nicht im Laufverlauf, daher gibt es nichts zu vergleichen oder zu teilen</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Place this run beside an earlier run or a known machine</source>
        <translation>Diesen Lauf neben einen früheren Lauf oder einen bekannten Rechner stellen</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Save this run as one HTML page that any browser opens and Quarbel imports again</source>
        <translation>Diesen Lauf als eine HTML-Seite speichern, die jeder Browser öffnet und Quarbel wieder importiert</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>An Earlier Run…</source>
        <translation>Ein früherer Lauf…</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Known machines</source>
        <translation>Bekannte Rechner</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1 · %2</source>
        <translation>%1 · %2</translation>
    </message>
    <message>
        <location line="+3"/>
        <source> · Quarbel %1</source>
        <translation> · Quarbel %1</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Share Run</source>
        <translation>Lauf teilen</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Web page (*.html)</source>
        <translation>Webseite (*.html)</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::ComparisonView</name>
    <message>
        <location filename="../src/ui/views/comparison_view.cpp" line="+33"/>
        <source>faster</source>
        <translation>schneller</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>slower</source>
        <translation>langsamer</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>within noise</source>
        <translation>im Rauschen</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>inconclusive</source>
        <translation>unklar</translation>
    </message>
    <message>
        <location line="+44"/>
        <source>BENCHMARK</source>
        <translation>BENCHMARK</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>A</source>
        <translation>A</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>B</source>
        <translation>B</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>CHANGE</source>
        <translation>ÄNDERUNG</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>± 95 %</source>
        <translation>± 95 %</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>VERDICT</source>
        <translation>URTEIL</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::LiveText</name>
    <message>
        <location filename="../src/ui/views/live_text.cpp" line="+21"/>
        <source>%1 FPS average, %2 min, %3 max, %4 frames</source>
        <translation>%1 FPS im Mittel, %2 min., %3 max., %4 Frames</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::LogPanel</name>
    <message>
        <location filename="../src/ui/views/log_panel.cpp" line="+97"/>
        <source>LOG</source>
        <translation>PROTOKOLL</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::ResultCardSaver</name>
    <message>
        <location filename="../src/ui/views/result_card_saver.cpp" line="+143"/>
        <source>Save Result Card</source>
        <translation>Ergebniskarte speichern</translation>
    </message>
    <message>
        <location line="+50"/>
        <source>Result card saved to %1</source>
        <translation>Ergebniskarte gespeichert unter %1</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>Could not save result card</source>
        <translation>Ergebniskarte konnte nicht gespeichert werden</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::ResultPanel</name>
    <message>
        <location filename="../src/ui/views/result_panel.cpp" line="+128"/>
        <source>Save Result Card</source>
        <translation>Ergebniskarte speichern</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Only a completed result can be saved as a card</source>
        <translation>Nur ein abgeschlossenes Ergebnis lässt sich als Karte speichern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Save this result as a PNG card</source>
        <translation>Dieses Ergebnis als PNG-Karte speichern</translation>
    </message>
    <message>
        <location line="+85"/>
        <source>Running now</source>
        <translation>Läuft gerade</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Not run yet</source>
        <translation>Noch nicht gelaufen</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Skipped</source>
        <translation>Übersprungen</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>TO RUN IT ON THIS MACHINE</source>
        <translation>SO LÄUFT ER AUF DIESEM RECHNER</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Quarbel points</source>
        <translation>Quarbel-Punkte</translation>
    </message>
    <message>
        <location line="+13"/>
        <location filename="../src/ui/views/result_panel_text.cpp" line="+24"/>
        <source>Noisy machine</source>
        <translation>Unruhiges System</translation>
    </message>
    <message>
        <location filename="../src/ui/views/result_panel_text.cpp" line="+30"/>
        <source>Target duration: %1 s per pass.</source>
        <translation>Zieldauer: %1 s pro Durchgang.</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>%1 (95 %): too wide to compare with</source>
        <translation>%1 (95 %): zu breit für Vergleiche</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>%1 (95 %, %2 passes)</source>
        <translation>%1 (95 %, %2 Durchgänge)</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>%1 (95 % interval)</source>
        <translation>%1 (95-%-Intervall)</translation>
    </message>
    <message>
        <location line="-39"/>
        <source>Noisy machine: other work took %1 % of the CPU, the host %2 % as steal while it ran</source>
        <translation>Unruhiges System: Während der Messung belegte andere Arbeit %1 % der CPU, der Host %2 % als Steal-Zeit</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Noisy machine: other work took %1 % of the CPU while it ran</source>
        <translation>Unruhiges System: Während der Messung belegte andere Arbeit %1 % der CPU</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>%1 (%2 cores)</source>
        <translation>%1 (%2 Kerne)</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>%1; busy as the run started: %2</source>
        <translation>%1; beim Start des Laufs ausgelastet: %2</translation>
    </message>
    <message>
        <location filename="../src/ui/views/result_panel.cpp" line="-190"/>
        <source>SENSORS AND ENERGY</source>
        <translation>SENSOREN UND ENERGIE</translation>
    </message>
    <message>
        <location filename="../src/ui/views/result_panel_text.cpp" line="+43"/>
        <source>On Linux this benchmark runs on Vulkan. Install a Vulkan driver (mesa-vulkan-drivers for the CPU fallback, or your GPU vendor&apos;s), or pick another device with QUARBEL_GPU (see `quarbel info`).</source>
        <translation>Unter Linux läuft dieser Benchmark auf Vulkan. Einen Vulkan-Treiber installieren (mesa-vulkan-drivers als CPU-Ersatz oder den des GPU-Herstellers) oder mit QUARBEL_GPU ein anderes Gerät wählen (siehe `quarbel info`).</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>Install an OpenCL driver (ICD): pocl-opencl-icd for the CPU, or your GPU vendor&apos;s ICD. `clinfo` lists the devices OpenCL can see.</source>
        <translation>Einen OpenCL-Treiber (ICD) installieren: pocl-opencl-icd für die CPU oder den ICD des GPU-Herstellers. `clinfo` listet die Geräte, die OpenCL sieht.</translation>
    </message>
    <message>
        <location filename="../src/ui/views/result_panel.cpp" line="+192"/>
        <source>Stability %1</source>
        <translation>Stabilität %1</translation>
    </message>
    <message>
        <location line="+14"/>
        <source>Noisy</source>
        <translation>Unruhig</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Secondary</source>
        <translation>Sekundär</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Unavailable</source>
        <translation>Nicht verfügbar</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Duration</source>
        <translation>Dauer</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::RunHeader</name>
    <message>
        <location filename="../src/ui/views/run_header.cpp" line="+41"/>
        <source>Run</source>
        <translation>Ausführen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Accuracy Mode</source>
        <translation>Genauigkeitsmodus</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Quick</source>
        <translation>Schnell</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Run the selected benchmark</source>
        <translation>Den gewählten Benchmark ausführen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Run all thirteen benchmarks</source>
        <translation>Alle dreizehn Benchmarks ausführen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Stop the active run</source>
        <translation>Den aktiven Lauf stoppen</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Run each benchmark three times and keep the median (takes effect at the next start)</source>
        <translation>Jeden Benchmark dreimal ausführen und den Median behalten (gilt ab dem nächsten Start)</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>A tenth of every time budget, for a fast check; quick results are marked and compare with quick runs only (takes effect at the next start)</source>
        <translation>Ein Zehntel jedes Zeitbudgets, für eine schnelle Prüfung; schnelle Ergebnisse sind markiert und nur mit schnellen Läufen vergleichbar (gilt ab dem nächsten Start)</translation>
    </message>
    <message>
        <location line="+75"/>
        <source>COOLING DOWN BEFORE</source>
        <translation>ABKÜHLEN VOR</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>RUNNING</source>
        <translation>LÄUFT</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>PREPARING</source>
        <translation>VORBEREITUNG</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>READY</source>
        <translation>BEREIT</translation>
    </message>
    <message>
        <location line="+6"/>
        <source>QUICK</source>
        <translation>SCHNELL</translation>
    </message>
    <message>
        <location line="+20"/>
        <source>Waiting for the machine to cool before the next benchmark; Stop ends the wait.</source>
        <translation>Der Rechner kühlt vor dem nächsten Benchmark ab; Stopp beendet das Warten.</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>Target %1 s per pass (quick)</source>
        <translation>Ziel %1 s pro Durchgang (schnell)</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>Target %1 s per pass</source>
        <translation>Ziel %1 s pro Durchgang</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Run measures the selected benchmark; All runs the whole suite of thirteen (a few minutes).</source>
        <translation>Ausführen misst den gewählten Benchmark, Alle die ganze Suite aus dreizehn (einige Minuten).</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::RunResultsView</name>
    <message>
        <location filename="../src/ui/views/run_results_view.cpp" line="+97"/>
        <source>RUN SUMMARY</source>
        <translation>LAUFÜBERSICHT</translation>
    </message>
    <message>
        <location line="+4"/>
        <source>Stopped before its end</source>
        <translation>Vor dem Ende gestoppt</translation>
    </message>
    <message>
        <location line="+5"/>
        <source>Quick run</source>
        <translation>Schneller Lauf</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Accuracy Mode</source>
        <translation>Genauigkeitsmodus</translation>
    </message>
    <message>
        <location line="+28"/>
        <source>Run score</source>
        <translation>Laufwertung</translation>
    </message>
    <message>
        <location line="-107"/>
        <location line="+108"/>
        <source>Completed</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <location filename="../src/ui/views/summary_panel.cpp" line="-29"/>
        <source>Full Suite Summary</source>
        <translation>Übersicht der kompletten Suite</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Full Suite Accuracy Summary</source>
        <translation>Genauigkeitsübersicht der kompletten Suite</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Selected Test Summary</source>
        <translation>Übersicht des gewählten Tests</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Selected Test Accuracy Summary</source>
        <translation>Genauigkeitsübersicht des gewählten Tests</translation>
    </message>
    <message>
        <location filename="../src/ui/views/run_results_view.cpp" line="-110"/>
        <source>Not Run</source>
        <translation>Nicht gelaufen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Running</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Skipped</source>
        <translation>Übersprungen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <location line="+94"/>
        <source>Started %1  ·  Quarbel %2  ·  global score %3 over all thirteen</source>
        <translation>Gestartet %1  ·  Quarbel %2  ·  Gesamtwertung %3 über alle dreizehn</translation>
    </message>
    <message>
        <location line="+12"/>
        <location line="+1"/>
        <source>%1 / %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Skipped / failed</source>
        <translation>Übersp. / Fehler</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Elapsed</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Peak CPU</source>
        <translation>CPU-Spitze</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>Peak GPU</source>
        <translation>GPU-Spitze</translation>
    </message>
    <message>
        <location line="+13"/>
        <source>A stopped run has no summary and no global card. Below are the benchmarks that finished before the stop.</source>
        <translation>Ein gestoppter Lauf hat keine Übersicht und keine Gesamtkarte. Unten stehen die Benchmarks, die vor dem Stopp fertig wurden.</translation>
    </message>
    <message>
        <location line="+15"/>
        <source>BENCHMARK</source>
        <translation>BENCHMARK</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>STATUS</source>
        <translation>STATUS</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>SCORE</source>
        <translation>WERTUNG</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>PRIMARY</source>
        <translation>PRIMÄR</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>SECONDARY</source>
        <translation>SEKUNDÄR</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>DURATION</source>
        <translation>DAUER</translation>
    </message>
    <message>
        <location line="+9"/>
        <source>No benchmark finished in this run.</source>
        <translation>In diesem Lauf wurde kein Benchmark fertig.</translation>
    </message>
    <message>
        <location line="-39"/>
        <location line="+2"/>
        <location line="+84"/>
        <source>Unavailable</source>
        <translation>k. A.</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::ScoreGauge</name>
    <message>
        <location filename="../src/ui/views/score_gauge.cpp" line="+59"/>
        <source>GLOBAL SCORE</source>
        <translation>GESAMTWERTUNG</translation>
    </message>
    <message>
        <location line="+30"/>
        <source>Quarbel points</source>
        <translation>Quarbel-Punkte</translation>
    </message>
    <message>
        <location line="+2"/>
        <source>%1/13 complete</source>
        <translation>%1/13 fertig</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::SidebarFooter</name>
    <message>
        <location filename="../src/ui/views/sidebar_footer.cpp" line="+29"/>
        <source>COMPLETED</source>
        <translation>FERTIG</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>GLOBAL SCORE</source>
        <translation>GESAMTWERTUNG</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::SidebarView</name>
    <message>
        <location filename="../src/ui/views/sidebar_view.cpp" line="+24"/>
        <source>Idle</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Running</source>
        <translation>Läuft</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Skipped</source>
        <translation>Übersprungen</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Failed</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Benchmarks</source>
        <translation>Benchmarks</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::StageView</name>
    <message>
        <location filename="../src/ui/views/stage_view.cpp" line="+134"/>
        <source>RATE OVER TIME</source>
        <translation>RATE IM ZEITVERLAUF</translation>
    </message>
    <message>
        <location line="+67"/>
        <source>NEXT  ·  %1</source>
        <translation>ALS NÄCHSTES  ·  %1</translation>
    </message>
    <message>
        <location line="+19"/>
        <source>Each benchmark starts on a machine back near idle, so that the heat the one before it left does not slow it down. Stop ends the wait.</source>
        <translation>Jeder Benchmark startet auf einem Rechner nahe dem Leerlauf, damit ihn die Wärme des vorigen nicht bremst. Stopp beendet das Warten.</translation>
    </message>
    <message>
        <location line="+18"/>
        <source>LIVE STAGE  ·  %1</source>
        <translation>LIVE-ANZEIGE  ·  %1</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>LIVE STAGE  ·  %1  ·  %2</source>
        <translation>LIVE-ANZEIGE  ·  %1  ·  %2</translation>
    </message>
    <message>
        <location line="+56"/>
        <source>%1  ·  IN ITS OWN WINDOW</source>
        <translation>%1  ·  IM EIGENEN FENSTER</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::SummaryPanel</name>
    <message>
        <location filename="../src/ui/views/summary_panel.cpp" line="+31"/>
        <source>Save Result Card</source>
        <translation>Karte speichern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Compare with…</source>
        <translation>Vergleichen…</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Share…</source>
        <translation>Teilen…</translation>
    </message>
    <message>
        <location line="+16"/>
        <source>Save this run as a global PNG card</source>
        <translation>Diesen Lauf als Gesamtkarte (PNG) speichern</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>No benchmark of this run completed: there is no score for a card</source>
        <translation>Kein Benchmark dieses Laufs wurde fertig: Es gibt keine Wertung für eine Karte</translation>
    </message>
    <message>
        <location line="+28"/>
        <source>RUN SUMMARY</source>
        <translation>LAUFÜBERSICHT</translation>
    </message>
    <message>
        <location line="+25"/>
        <source>Total score</source>
        <translation>Gesamtwertung</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Completed</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <location line="+0"/>
        <location line="+1"/>
        <source>%1 / %2</source>
        <translation>%1 / %2</translation>
    </message>
    <message>
        <location line="+0"/>
        <source>Skipped / failed</source>
        <translation>Übersp. / Fehler</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Elapsed</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>Peak CPU</source>
        <translation>CPU-Spitze</translation>
    </message>
    <message>
        <location line="+1"/>
        <location line="+2"/>
        <source>Unavailable</source>
        <translation>Nicht verfügbar</translation>
    </message>
    <message>
        <location line="-1"/>
        <source>Peak GPU</source>
        <translation>GPU-Spitze</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::SystemPanel</name>
    <message>
        <location filename="../src/ui/views/system_panel.cpp" line="+34"/>
        <source>SYSTEM</source>
        <translation>SYSTEM</translation>
    </message>
    <message>
        <location line="+10"/>
        <source>Unavailable</source>
        <translation>nicht verfügbar</translation>
    </message>
    <message>
        <location line="+3"/>
        <source>CPU</source>
        <translation>CPU</translation>
    </message>
    <message>
        <location line="+1"/>
        <source>GPU</source>
        <translation>GPU</translation>
    </message>
    <message>
        <location line="+8"/>
        <source>Reading system facts...</source>
        <translation>Systemdaten werden gelesen...</translation>
    </message>
</context>
<context>
    <name>quarbel::ui::WorkloadAnimationView</name>
    <message>
        <location filename="../src/ui/views/workload_animation_view.cpp" line="+69"/>
        <source>%1  ·  LIVE WORKLOAD</source>
        <translation>%1  ·  LAUFENDE LAST</translation>
    </message>
</context>
</TS>
