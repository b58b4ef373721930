// Records what is done as a scenario, and runs scenarios.
import { html, useState } from "./preact.mjs";
import { post } from "./feed.mjs";
import { Answer, Section, useAction } from "./parts.mjs";

const FRAMES = 40; // in which the lines get their colour, so that one sees them pass

function download(text) {
  const href = URL.createObjectURL(new Blob([text], { type: "text/plain" }));
  Object.assign(document.createElement("a"), { href, download: "telephone.scenario" }).click();
  URL.revokeObjectURL(href);
}

// Each step runs in virtual time, in no time: the lines up to the failed one have passed.
function Lines({ scenario, upTo, failed }) {
  return html`<ol class="lines" tabindex="0" aria-label="Scenario">
    ${scenario.trimEnd().split("\n").map((line, index) => {
      const state = index >= upTo ? "" : index + 1 === failed ? "failed" : "passed";
      return html`<li class=${state}>${line}${state && html`<span class="state"> ${state}</span>`}</li>`;
    })}
  </ol>`;
}

function useReplay() {
  const [run, answer] = useAction();
  const [shown, setShown] = useState(null); // {scenario, upTo, failed, output}
  const start = (scenario) => run(async () => {
    setShown({ scenario, upTo: 0 });
    const { passed, output } = await post("/replay", { scenario });
    const failed = Number(/^scenario:(\d+):/.exec(output)?.[1] ?? 0);
    const last = passed ? scenario.trimEnd().split("\n").length : failed;
    const pass = (upTo) => {
      setShown({ scenario, upTo, failed, output });
      if (upTo < last) requestAnimationFrame(() => pass(Math.min(last, upTo + Math.ceil(last / FRAMES))));
    };
    pass(0);
    if (!passed) throw new Error(failed ? `failed in line ${failed}` : "failed");
    return { note: `passed, all ${last} lines` };
  });
  return [start, shown, answer];
}

export function Scenarios({ phone }) {
  const [run, answer] = useAction();
  const [start, shown, outcome] = useReplay();
  const [recorded, setRecorded] = useState(null);
  const recording = phone.recording ?? false;
  const record = () => run(async () => {
    const { scenario, said } = await post("/record", { telephone: phone.number, on: !recording });
    if (scenario !== undefined) setRecorded(scenario);
    return { note: said ?? "recording" };
  });
  const take = async (files) => files.length > 0 && start(await files[0].text());
  return html`<${Section} title="Record and run" name="scenarios">
    <div class="buttons">
      <button type="button" class="record" aria-pressed=${String(recording)} onClick=${record}>
        <span aria-hidden="true">●</span> ${recording ? "Stop recording" : "Record"}</button>
      ${recorded !== null && html`
        <button type="button" onClick=${() => download(recorded)}>Download</button>
        <button type="button" onClick=${() => start(recorded)}>Run it again</button>`}
    </div>
    <${Answer} answer=${answer} />
    <label class="drop" onDragOver=${(event) => event.preventDefault()}
      onDrop=${(event) => { event.preventDefault(); take(event.dataTransfer.files); }}>
      Drop a scenario here, or choose one:
      <input type="file" onChange=${(event) => take(event.target.files)} />
    </label>
    <${Answer} answer=${outcome} />
    ${shown && html`<${Lines} ...${shown} />`}
    ${shown?.output && html`<pre>${shown.output}</pre>`}
  <//>`;
}
